#include "platform/qt/QtUser.h"

#include <QApplication>
#include <QInputDialog>
#include <QMessageBox>

#include "platform/program.h"
#include "platform/qt/QtText.h"

namespace tarnwick::qt {
namespace {

QMessageBox::StandardButtons ButtonsOf(ui::Buttons buttons) {
  switch (buttons) {
    case ui::Buttons::YesNo: return QMessageBox::Yes | QMessageBox::No;
    case ui::Buttons::RetryCancel: return QMessageBox::Retry | QMessageBox::Cancel;
    case ui::Buttons::Ok: break;
  }
  return QMessageBox::Ok;
}

QMessageBox::StandardButton FirstOf(ui::Buttons buttons) {
  switch (buttons) {
    case ui::Buttons::YesNo: return QMessageBox::Yes;
    case ui::Buttons::RetryCancel: return QMessageBox::Retry;
    case ui::Buttons::Ok: break;
  }
  return QMessageBox::Ok;
}

QMessageBox::StandardButton LastOf(ui::Buttons buttons) {
  switch (buttons) {
    case ui::Buttons::YesNo: return QMessageBox::No;
    case ui::Buttons::RetryCancel: return QMessageBox::Cancel;
    case ui::Buttons::Ok: break;
  }
  return QMessageBox::Ok;
}

QMessageBox::Icon IconOf(ui::Icon icon) {
  switch (icon) {
    case ui::Icon::Critical: return QMessageBox::Critical;
    case ui::Icon::Question: return QMessageBox::Question;
    case ui::Icon::Information: return QMessageBox::Information;
    case ui::Icon::Exclamation: break;
  }
  return QMessageBox::Warning;
}

ui::Answer AnswerOf(int button) {
  switch (button) {
    case QMessageBox::Yes: return ui::Answer::Yes;
    case QMessageBox::No: return ui::Answer::No;
    case QMessageBox::Retry: return ui::Answer::Retry;
    case QMessageBox::Cancel: return ui::Answer::Cancel;
    default: return ui::Answer::Ok;
  }
}

}  // namespace

ui::Answer QtUser::MessageBox(std::string_view text, ui::Buttons buttons, ui::Icon icon) {
  QMessageBox box(IconOf(icon), Show(program::This().name), Show(text), ButtonsOf(buttons),
                  QApplication::activeWindow());
  box.setTextFormat(Qt::PlainText);  // device names and file names are shown, never interpreted
  box.setWindowModality(Qt::ApplicationModal);
  box.setDefaultButton(FirstOf(buttons));
  box.setEscapeButton(LastOf(buttons));
  return AnswerOf(box.exec());
}

std::string QtUser::InputBox(std::string_view prompt, std::string_view title, std::string_view proposed) {
  QInputDialog box(QApplication::activeWindow());
  box.setInputMode(QInputDialog::TextInput);
  box.setWindowModality(Qt::ApplicationModal);
  box.setWindowTitle(Show(title));
  box.setLabelText(Show(prompt));
  box.setTextValue(Show(proposed));
  return box.exec() == QDialog::Accepted ? Read(box.textValue()) : std::string();
}

void QtUser::PumpEvents() { QCoreApplication::processEvents(); }

void QtUser::Beep() { QApplication::beep(); }

}  // namespace tarnwick::qt
