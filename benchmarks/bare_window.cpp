// A window with one button, of about the size of the program's: what any start is held against.
#include <QApplication>
#include <QPushButton>

#include "FirstPaint.h"

int main(int argc, char* argv[]) {
  QApplication application(argc, argv);
  QWidget window;
  window.resize(600, 270);
  QPushButton button(QStringLiteral("Next  >"), &window);
  tarnwick::bench::FirstPaint end(button);
  window.show();
  return QApplication::exec();
}
