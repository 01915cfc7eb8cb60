// The program's real window, as an owner sees it and lays hands on it.
#pragma once

#include <QComboBox>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <string>
#include <vector>

#include "app/App.h"
#include "platform/program.h"
#include "support/CalmHands.h"
#include "support/ClockDouble.h"

namespace tarnwick::campaign {

class Screen {
 public:
  /// Puts the program in place, in its folder.
  explicit Screen(const std::filesystem::path& folder);
  ~Screen();
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;

  /// Starts it: afterwards the first page is on view. From then on nothing is painted, which takes more than
  /// half of the time.
  void Start();

  /// Which page is on view, from 1.
  int Page() const;
  /// A click where the control is, as the window system tells it: a disabled one gets none.
  void Click(const char* control);
  /// Clicks the row of a list that has this text. False when none has.
  bool Choose(const char* list, const std::string& row);
  void ChoosePort(const char* port);

  std::vector<std::string> Rows(const char* list);
  bool IsLive(const char* control);
  std::string Caption(const char* button);
  /// The text over the progress bar.
  std::string Progress();
  std::vector<std::string> Lines(const char* text);
  /// What the status report says of a motor, such as its "State".
  std::string Reported(const std::string& motor, const std::string& what);
  /// Nothing runs, and the page can be used.
  bool IsAtRest();
  bool HasEnded() const { return mEnded; }

 private:
  template <class Widget = QWidget>
  Widget& Find(const char* name);
  void ClickAt(QWidget& widget, QPoint at);

  test::ClockDouble mClock;
  App mApp;
  test::CalmHands mHands;
  QWidget* mProgress = nullptr;  ///< Looked for once: it is looked at with each block.
  bool mEnded = false;
  program::Ending mEnding{[this] { mEnded = true; }};
};

}  // namespace tarnwick::campaign
