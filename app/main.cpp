#include <QApplication>

#include "app/App.h"

int main(int argc, char* argv[]) {
  QApplication application(argc, argv);
  tarnwick::App app(application);
  app.Start();
  return QApplication::exec();
}
