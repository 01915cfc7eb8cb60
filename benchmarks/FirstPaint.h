// The end of a start that is measured: the window's first picture.
#pragma once

#include <QEvent>
#include <QGuiApplication>
#include <QObject>
#include <QTimer>
#include <QWidget>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>

namespace tarnwick::bench {

/// Ends the process as soon as `watched` is painted, with the peak of its memory in kB on standard
/// output. The painting that is under way is finished first, and so is the window system's part.
class FirstPaint final : public QObject {
 public:
  explicit FirstPaint(QWidget& watched) { watched.installEventFilter(this); }

 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::Paint) QTimer::singleShot(0, Finish);
    return false;
  }

 private:
  static void Finish() {
    QGuiApplication::sync();
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
      if (line.starts_with("VmHWM:")) std::cout << std::stol(line.substr(6)) << std::endl;
    }
    std::_Exit(0);
  }
};

}  // namespace tarnwick::bench
