// A scripted user: answers queued, boxes recorded.
#pragma once

#include <array>
#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/ui.h"

namespace tarnwick::test {

/// Installs itself for its lifetime. Without a queued answer the default button is pressed.
class UserDouble : public ui::IUserInterface {
 public:
  UserDouble() { Seam<ui::IUserInterface>::Install(*this); }
  ~UserDouble() override { Seam<ui::IUserInterface>::Uninstall(); }

  ui::Answer MessageBox(std::string_view text, ui::Buttons buttons, ui::Icon icon) override {
    constexpr std::array kButtons{"Ok ", "YesNo ", "RetryCancel ", "NoYes "};
    constexpr std::array kIcons{"!|", "X|", "?|", "i|"};
    boxes.push_back(kButtons[static_cast<std::size_t>(buttons)]);
    boxes.back().append(kIcons[static_cast<std::size_t>(icon)]).append(text);
    if (log) log("box");
    constexpr std::array kDefaults{ui::Answer::Ok, ui::Answer::Yes, ui::Answer::Retry, ui::Answer::No};
    return Next(answers, kDefaults[static_cast<std::size_t>(buttons)]);
  }
  std::string InputBox(std::string_view prompt, std::string_view title, std::string_view proposed) override {
    inputs.push_back(std::string(title) + "|" + std::string(prompt) + "|" + std::string(proposed));
    return Next(inputAnswers, {});
  }
  void PumpEvents() override {
    ++pumps;
    if (log) log("pump");
    if (onPump) onPump();
  }
  void PumpPainting() override {}
  void Beep() override { ++beeps; }

  /// The boxes so far, and none from now on.
  std::vector<std::string> Said() { return std::exchange(boxes, {}); }
  /// The last box, or empty.
  std::string LastBox() const { return boxes.empty() ? std::string() : boxes.back(); }

  std::deque<ui::Answer> answers;
  std::deque<std::string> inputAnswers;
  std::vector<std::string> boxes;   ///< "buttons icon|text"
  std::vector<std::string> inputs;  ///< "title|prompt|proposed"
  int pumps = 0;
  int beeps = 0;
  std::function<void()> onPump;
  std::function<void(const std::string&)> log;  ///< Told "box" and "pump", for tests of one recorded order.

 private:
  template <class Answer>
  static Answer Next(std::deque<Answer>& queue, Answer otherwise) {
    if (queue.empty()) return otherwise;
    const Answer next = queue.front();
    queue.pop_front();
    return next;
  }
};

}  // namespace tarnwick::test
