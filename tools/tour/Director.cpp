#include "Director.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCoreApplication>
#include <QTest>
#include <QTimer>
#include <chrono>
#include <iostream>
#include <utility>

#include "platform/qt/QtText.h"

namespace tarnwick::tour {
namespace {

constexpr std::chrono::milliseconds kTick{25};
/// Ticks without change before the window counts as at rest, so that it has been painted too.
constexpr int kQuiet = 4;
/// As many before a box is answered: it takes nothing in its first moments.
constexpr int kRead = 20;
constexpr int kMostTicks = 4000;

std::string ButtonNames(const QMessageBox& box) {
  std::string names;
  for (const QAbstractButton* const button : box.buttons()) {
    names += names.empty() ? "" : ", ";
    names += button->text().remove(QLatin1Char('&')).toStdString();
  }
  return names;
}

}  // namespace

Director::Director(QWidget& frame, std::filesystem::path folder, Means means)
    : mFrame(frame),
      mMeans(means),
      mFolder(std::move(folder)),
      mProtocol(mFolder / "tour.txt"),
      mTicksLeft(kMostTicks) {
  qApp->installEventFilter(this);
}

bool Director::eventFilter(QObject* watched, QEvent* event) {
  const QEvent::Type type = event->type();
  // Half of a run can be over between two ticks.
  if (type == QEvent::Paint && watched->objectName() == QLatin1String("progress"))
    QTimer::singleShot(0, this, [this] { PictureHalfDone(); });
  const bool mouse = type == QEvent::MouseButtonPress || type == QEvent::MouseButtonRelease ||
                     type == QEvent::MouseButtonDblClick || type == QEvent::Wheel;
  if (mouse) ++mMouseEvents;
  return false;
}

bool Director::Play() {
  QTimer::singleShot(kTick, [this] { Tick(); });
  QCoreApplication::exec();
  for (const Cue& cue : mCues) Check(false, "a box came up that begins \"" + cue.begins + "\"");
  if (mMeans == Means::Keyboard) Check(mMouseEvents == 0, "the mouse was not touched");
  return !mFailed;
}

void Director::Curtain() {
  QCoreApplication::exit();
}

void Director::Tick() {
  // Armed first: what follows may open a box or start a run, and go on ticking inside it.
  QTimer::singleShot(kTick, [this] { Tick(); });
  if (--mTicksLeft < 0) {
    Check(false, "the tour ended in time");
    return Curtain();
  }
  if (AnswerBox()) return;
  // Without a window manager nobody gives the focus back when a box has gone.
  const bool active = QApplication::activeWindow() != nullptr;
  if (!active) mFrame.activateWindow();
  if (!active || !AtRest()) {
    mQuietTicks = 0;
    return;
  }
  if (++mQuietTicks < kQuiet || mScenes.empty()) return;
  mQuietTicks = 0;
  const std::function<void()> scene = std::move(mScenes.front());
  mScenes.pop_front();
  scene();
}

bool Director::AnswerBox() {
  auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
  if (box == nullptr) {
    mBox = nullptr;
    return false;
  }
  if (box != mBox) {
    mBox = box;
    mQuietTicks = 0;
  }
  if (++mQuietTicks != kRead) return true;
  const std::string text = box->text().toStdString();
  Note("[" + box->windowTitle().toStdString() + "] " + text);
  const bool expected = !mCues.empty() && text.starts_with(mCues.front().begins);
  Check(expected, "the box was expected");
  const Cue cue = expected ? mCues.front() : Cue{{}, QMessageBox::NoButton, "unexpected"};
  if (expected) mCues.pop_front();
  PictureOf(*box, "box-" + cue.picture);
  cue.before();
  QAbstractButton* button = box->button(cue.answer);
  if (button == nullptr) button = box->escapeButton();
  Note("  of " + ButtonNames(*box) + ": " + button->text().remove(QLatin1Char('&')).toStdString());
  Press(*button);
  mBox = nullptr;  // The next one may lie where this one lay.
  return true;
}

void Director::PictureHalfDone() {
  for (const QWidget* const bar : mFrame.findChildren<QWidget*>(QStringLiteral("progress"))) {
    const QString text = bar->isVisible() ? bar->accessibleDescription() : QString();
    const QString last = text.mid(text.lastIndexOf(QLatin1Char(' ')) + 1);
    const int percent = last.endsWith(QLatin1Char('%')) ? last.chopped(1).toInt() : 0;
    if (percent < 45 || percent == 100) continue;
    const bool programming = text.startsWith(QLatin1String("Programming"));
    if (!programming && text != last) continue;
    const std::string name = programming ? "run-half-done" : "web-downloading";
    // The text is painted first, and the bar follows it.
    if (std::exchange(mHalfDone, text) == text && !Pictured(name)) Picture(name);
  }
}

bool Director::AtRest() const {
  const auto* const web = mFrame.findChild<QWidget*>(QStringLiteral("frmWebUpdate"));
  if (web != nullptr)
    return web->isVisible() && web->findChild<QWidget*>(QStringLiteral("cmdDone"))->isEnabled();
  // Dead while the page is locked; the page itself turns grey a little later.
  const QWidget* const help = mFrame.findChild<QWidget*>(QStringLiteral("cmdHelp"));
  return help != nullptr && help->isEnabled() && mFrame.isVisible();
}

void Director::Picture(const std::string& name) {
  QWidget* const front = QApplication::activeModalWidget();
  PictureOf(front != nullptr ? *front : mFrame, name);
}

void Director::PictureOf(QWidget& widget, const std::string& name) {
  mPictures.insert(name);
  const std::filesystem::path file = mFolder / (name + ".png");
  Check(widget.grab().save(QString::fromStdString(file.string())), "picture " + name + ".png");
}

void Director::Note(const std::string& line) {
  mProtocol << line << '\n' << std::flush;
  std::cout << line << std::endl;
}

void Director::NotOnView(const char* name) {
  throw std::logic_error(std::string("not on view: ").append(name));
}

void Director::Check(bool holds, const std::string& what) {
  Note((holds ? "ok      " : "FAILED  ") + what);
  mFailed = mFailed || !holds;
}

void Director::Key(Qt::Key key, Qt::KeyboardModifiers modifiers) {
  QWidget* const box = QApplication::activeModalWidget();
  QTest::keyClick((box != nullptr ? *box : mFrame).windowHandle(), key, modifiers);
}

void Director::Press(const char* button) {
  Press(Find<QWidget>(button));
}

void Director::Press(QWidget& button) {
  if (mMeans == Means::Mouse) {
    QTest::mouseClick(&button, Qt::LeftButton);
    return;
  }
  TabTo(button);
  Key(Qt::Key_Space);
}

void Director::TabTo(QWidget& control) {
  constexpr int kMostTabs = 30;
  const auto arrived = [&control] { return control.window()->focusWidget() == &control; };
  for (int i = 0; i < kMostTabs && !arrived(); ++i) Key(Qt::Key_Tab);
  if (!arrived()) Check(false, "Tab reaches " + control.objectName().toStdString());
}

void Director::Choose(const char* name, const QString& text) {
  auto& list = Find<QAbstractItemView>(name);
  const QAbstractItemModel& model = *list.model();
  const QModelIndexList found = model.match(model.index(0, 0), Qt::DisplayRole, text, 1, Qt::MatchExactly);
  if (found.isEmpty()) return Check(false, "an entry " + text.toStdString());
  const QModelIndex& wanted = found.front();
  if (mMeans == Means::Mouse) {
    list.scrollTo(wanted);
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, list.visualRect(wanted).center());
    return;
  }
  TabTo(list);
  for (int i = 0; i < model.rowCount(); ++i) Key(Qt::Key_Up);
  for (int i = 0; i < model.rowCount() && !list.selectionModel()->isSelected(wanted); ++i) Key(Qt::Key_Down);
}

}  // namespace tarnwick::tour
