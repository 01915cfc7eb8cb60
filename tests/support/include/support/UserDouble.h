// A scripted user: answers queued, boxes recorded.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "platform/ui.h"

namespace tarnwick::test {

struct Box {
  std::string text;
  ui::Buttons buttons = ui::Buttons::Ok;
  ui::Icon icon = ui::Icon::Exclamation;
  bool operator==(const Box&) const = default;
};

/// Installs itself for its lifetime. Without a queued answer the default button is pressed.
class UserDouble final : public ui::IUserInterface {
 public:
  UserDouble() { ui::Install(*this); }
  ~UserDouble() override { ui::Uninstall(); }

  ui::Answer MessageBox(std::string_view text, ui::Buttons buttons, ui::Icon icon) override {
    boxes.push_back({std::string(text), buttons, icon});
    if (log) log("box");
    if (!answers.empty()) {
      const ui::Answer answer = answers.front();
      answers.pop_front();
      return answer;
    }
    if (buttons == ui::Buttons::YesNo) return ui::Answer::Yes;
    return buttons == ui::Buttons::RetryCancel ? ui::Answer::Retry : ui::Answer::Ok;
  }
  std::string InputBox(std::string_view prompt, std::string_view title, std::string_view proposed) override {
    inputs.push_back(std::string(title) + "|" + std::string(prompt) + "|" + std::string(proposed));
    if (onInput) onInput();
    if (inputAnswers.empty()) return {};
    const std::string answer = inputAnswers.front();
    inputAnswers.pop_front();
    return answer;
  }
  void PumpEvents() override {
    ++pumps;
    if (log) log("pump");
    if (onPump) onPump();
  }
  void PumpPainting() override {
    if (onPaint) onPaint();
  }
  void Beep() override { ++beeps; }

  /// The text of the last box, or empty.
  std::string LastText() const { return boxes.empty() ? std::string() : boxes.back().text; }

  std::deque<ui::Answer> answers;
  std::deque<std::string> inputAnswers;
  std::vector<Box> boxes;
  std::vector<std::string> inputs;  ///< "title|prompt|proposed"
  int pumps = 0;
  int beeps = 0;
  std::function<void()> onPump;
  std::function<void()> onPaint;
  std::function<void()> onInput;
  std::function<void(const std::string&)> log;  ///< Told "box" and "pump", for tests of one recorded order.
};

}  // namespace tarnwick::test
