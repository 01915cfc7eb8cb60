#include "platform/qt/QtUser.h"

#include <QApplication>
#include <QInputDialog>
#include <QLabel>
#include <QMessageBox>
#include <QScreen>
#include <QStyle>
#include <algorithm>

#include "BoxIcon.h"
#include "platform/program.h"
#include "platform/qt/QtText.h"

namespace tarnwick::qt {
namespace {

QMessageBox::StandardButtons ButtonsOf(ui::Buttons buttons) {
  switch (buttons) {
    case ui::Buttons::YesNo:
      return QMessageBox::Yes | QMessageBox::No;
    case ui::Buttons::RetryCancel:
      return QMessageBox::Retry | QMessageBox::Cancel;
    case ui::Buttons::Ok:
      break;
  }
  return QMessageBox::Ok;
}

QMessageBox::StandardButton FirstOf(ui::Buttons buttons) {
  switch (buttons) {
    case ui::Buttons::YesNo:
      return QMessageBox::Yes;
    case ui::Buttons::RetryCancel:
      return QMessageBox::Retry;
    case ui::Buttons::Ok:
      break;
  }
  return QMessageBox::Ok;
}

QMessageBox::StandardButton LastOf(ui::Buttons buttons) {
  switch (buttons) {
    case ui::Buttons::YesNo:
      return QMessageBox::No;
    case ui::Buttons::RetryCancel:
      return QMessageBox::Cancel;
    case ui::Buttons::Ok:
      break;
  }
  return QMessageBox::Ok;
}

ui::Answer AnswerOf(int button) {
  switch (button) {
    case QMessageBox::Yes:
      return ui::Answer::Yes;
    case QMessageBox::No:
      return ui::Answer::No;
    case QMessageBox::Retry:
      return ui::Answer::Retry;
    case QMessageBox::Cancel:
      return ui::Answer::Cancel;
    default:
      return ui::Answer::Ok;
  }
}

/// What a screen reader says of an icon.
QString NameOf(ui::Icon icon) {
  switch (icon) {
    case ui::Icon::Critical:
      return QStringLiteral("Serious");
    case ui::Icon::Question:
      return QStringLiteral("Question");
    case ui::Icon::Information:
      return QStringLiteral("Information");
    case ui::Icon::Exclamation:
      break;
  }
  return QStringLiteral("Warning");
}

/// The lines of a message stay as they were written, as long as the screen has room for them.
void KeepLines(QMessageBox& box) {
  auto* const label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
  if (label == nullptr) return;
  const int wanted =
      label->fontMetrics().size(0, box.text()).width() + label->fontMetrics().averageCharWidth();
  label->setMinimumWidth(std::min(wanted, box.screen()->availableGeometry().width() * 3 / 4));
}

}  // namespace

ui::Answer QtUser::MessageBox(std::string_view text, ui::Buttons buttons, ui::Icon icon) {
  QMessageBox box(QMessageBox::NoIcon, Show(program::This().name), Show(text), ButtonsOf(buttons),
                  QApplication::activeWindow());
  box.setIconPixmap(
      BoxIcon(icon, box.style()->pixelMetric(QStyle::PM_MessageBoxIconSize), box.devicePixelRatioF()));
  box.setAccessibleName(NameOf(icon));
  box.setTextFormat(Qt::PlainText);  // device names and file names are shown, never interpreted
  KeepLines(box);
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

void QtUser::PumpEvents() {
  QCoreApplication::processEvents();
}

void QtUser::PumpPainting() {
  QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void QtUser::Beep() {
  QApplication::beep();
}

}  // namespace tarnwick::qt
