#include "platform/qt/QtUser.h"

#include <QApplication>
#include <QInputDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QShortcut>
#include <QStyle>
#include <QTimer>
#include <algorithm>

#include "BoxIcon.h"
#include "platform/help.h"
#include "platform/program.h"
#include "platform/qt/BoxOwner.h"
#include "platform/qt/InputGate.h"
#include "platform/qt/QtText.h"

namespace tarnwick::qt {
namespace {

/// What a box shows of a text: what fits a small screen beside the buttons.
constexpr TextBound kBoxText{.lines = 16, .lineLength = 300};

QMessageBox::StandardButtons ButtonsOf(ui::Buttons buttons) {
  switch (buttons) {
    case ui::Buttons::YesNo:
    case ui::Buttons::NoYes:
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
    case ui::Buttons::NoYes:
      return QMessageBox::No;
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
    case ui::Buttons::NoYes:
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

/// Help and F1 open the help at what it says of this message, and leave the box as it is.
void GiveHelp(QMessageBox& box, const std::string& text) {
  QPushButton* const help = box.addButton(QMessageBox::Help);
  QObject::disconnect(help, &QPushButton::clicked, nullptr, nullptr);  // A click would close the box.
  const auto show = [text] { help::ShowMessage(text); };
  QObject::connect(help, &QPushButton::clicked, &box, show);
  QObject::connect(new QShortcut(Qt::Key_F1, &box), &QShortcut::activated, &box, show);
}

/// Where another window lies before the box, the desktop is told that somebody is waited for.
void AskForAttention(QDialog& box) {
  QTimer::singleShot(0, &box, [&box] {
    if (!box.isActiveWindow()) QApplication::alert(box.parentWidget() == nullptr ? &box : box.parentWidget());
  });
}

}  // namespace

ui::Answer QtUser::MessageBox(std::string_view text, ui::Buttons buttons, ui::Icon icon) {
  QMessageBox box(QMessageBox::NoIcon, ShowName(program::This().name), Bounded(ShowName(text), kBoxText),
                  ButtonsOf(buttons), BoxOwner::Current());
  box.setIconPixmap(
      BoxIcon(icon, box.style()->pixelMetric(QStyle::PM_MessageBoxIconSize), box.devicePixelRatioF()));
  box.setAccessibleName(NameOf(icon));
  box.setTextFormat(Qt::PlainText);  // device names and file names are shown, never interpreted
  KeepLines(box);
  box.setWindowModality(Qt::WindowModal);
  box.setDefaultButton(FirstOf(buttons));
  box.setEscapeButton(LastOf(buttons));
  GiveHelp(box, std::string(text));
  InputGate::Of().HoldsBack(box);
  AskForAttention(box);
  return AnswerOf(box.exec());
}

std::string QtUser::InputBox(std::string_view prompt, std::string_view title, std::string_view proposed) {
  QInputDialog box(BoxOwner::Current());
  box.setInputMode(QInputDialog::TextInput);
  box.setWindowModality(Qt::WindowModal);
  box.setWindowTitle(Show(title));
  box.setLabelText(Show(prompt));
  box.setTextValue(Show(proposed));
  InputGate::Of().HoldsBack(box);
  AskForAttention(box);
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
