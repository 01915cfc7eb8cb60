// What somebody needs who sees little, or uses no mouse: that each control has name, role and its place in
// the order of the focus, and that no text is cut off; the help of a page, and how
// to be allowed to open a port. Run at several scales.
#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <QAccessible>

#include <QTextBrowser>
#include <QTimer>

#include "PagesTest.h"
#include "platform/qt/QtUser.h"
#include "programmer/Progress.h"
#include "support/HttpDouble.h"

namespace tarnwick::test {
namespace {

/// The user's own font, as it is when the program starts.
class SystemFont : public testing::WithParamInterface<int> {
 public:
  SystemFont() {
    QFont font;
    font.setPixelSize(GetParam());
    QApplication::setFont(font);
  }
};

class Accessibility : public SystemFont, public PagesTest {
 public:
  /// Names in the order of the Tab key, from the control that has the focus on.
  static std::vector<std::string> FocusOrder(QWidget& top) {
    std::vector<std::string> names;
    for (int i = 0; i < 100; ++i) {  // Within a page of the help it goes from link to link.
      const std::string name = top.focusWidget()->objectName().toStdString();
      if (names.size() > 1 && name == names.front()) break;
      if (names.empty() || name != names.back()) names.push_back(name);
      QTest::keyClick(top.focusWidget(), Qt::Key_Tab);
    }
    return names;
  }

  /// Each control on view: what a screen reader says of it, and whether its text fits.
  static void Walk(QWidget& top) {
    EXPECT_FALSE(NameOf(top).isEmpty());
    for (QWidget* const control : top.findChildren<QWidget*>()) {
      if (!control->isVisible()) continue;
      const auto trace = control->objectName().toStdString() + " of " + top.windowTitle().toStdString();
      SCOPED_TRACE(trace + ", a " + control->metaObject()->className());
      if (control->focusPolicy() & Qt::TabFocus) CheckControl(*control);
      if (auto* const label = qobject_cast<QLabel*>(control)) CheckLabel(*label);
      if (auto* const button = qobject_cast<QPushButton*>(control)) CheckButton(*button);
    }
  }

  /// The port page with one that the user may not open, and with what has to be done about it.
  void WalkRights() {
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_TRUE(::grantpt(master) == 0 && ::unlockpt(master) == 0);
    const char* const device = ::ptsname(master);
    const group* const tty = ::getgrnam("tty");
    std::filesystem::create_symlink(device, folder / "ports/COM6");
    std::filesystem::permissions(folder.Path(), std::filesystem::perms(0755));
    const uid_t self = ::geteuid();
    ASSERT_TRUE(tty != nullptr && (::chown(device, self, tty->gr_gid) == 0 || self != 0));
    ASSERT_EQ(::chmod(device, 0060), 0);
    ASSERT_TRUE(self != 0 || ::seteuid(65534) == 0) << "Root may open anything.";
    Click("cmdStepBack");
    Click("cmdStepFwd");
    Find<QComboBox>("cboComPort").setCurrentText(QStringLiteral("COM6"));
    EXPECT_EQ(Find<QLabel>("lblRights").text().toStdString(),
              "You may not open this port yet. Become a member of the group tty with this command in a "
              "terminal, then log out and in again:\nsudo usermod -aG tty $USER");
    EXPECT_TRUE(
        Find("cboComPort").toolTip().contains(QLatin1String(device) + QLatin1String("\nYou may not")));
    Walk(window);
    EXPECT_EQ(::seteuid(self), 0);
    ::close(master);
  }

 private:
  static QString NameOf(QWidget& widget) {
    return QAccessible::queryAccessibleInterface(&widget)->text(QAccessible::Name);
  }
  static void CheckControl(QWidget& control) {
    const QAccessibleInterface& seen = *QAccessible::queryAccessibleInterface(&control);
    EXPECT_FALSE(NameOf(control).isEmpty());
    EXPECT_FALSE(NameOf(control).contains(u'<')) << "An arrow is not to be read out.";
    EXPECT_NE(seen.role(), QAccessible::NoRole);
    EXPECT_NE(seen.role(), QAccessible::Client) << "Nobody knows what it is.";
    EXPECT_TRUE(control.parentWidget()->rect().contains(control.geometry()));
  }
  static void CheckLabel(QLabel& label) {
    if (label.text().isEmpty()) return;
    const int needed = label.wordWrap() ? label.heightForWidth(label.width()) : label.sizeHint().height();
    EXPECT_LE(needed, label.height()) << label.text().toStdString();
    EXPECT_LE(label.wordWrap() ? 0 : label.sizeHint().width(), label.width()) << label.text().toStdString();
    EXPECT_TRUE(label.parentWidget()->rect().contains(label.geometry())) << label.text().toStdString();
  }
  static void CheckButton(QPushButton& button) {
    const QFontMetrics font = button.fontMetrics();
    EXPECT_GE(button.width(), font.size(Qt::TextShowMnemonic, button.text()).width() + 4);
    EXPECT_GE(button.height(), font.height() + 2);
  }
};

TEST_P(Accessibility, EveryPageIsReadableAndInOrder) {
  const std::vector<std::string> orders[] = {
      {"cboDevice", "cmdHelp", "cmdStepFwd", "cmdTerminate"},
      {"cboComPort", "cmdHelp", "cmdStepBack", "cmdStepFwd", "cmdTerminate"},
      {"lstFirmware", "cmdWebUpdate", "txtFirmware", "txtStatus", "cmdRefresh", "cmdHelp", "cmdStepBack",
       "cmdStepFwd", "cmdTerminate"},
      {"lstDevices", "cmdProgram", "cmdVerify", "txtStatus", "cmdRefresh", "cmdCopy", "cmdHelp",
       "cmdStepBack", "cmdTerminate"}};
  Start();
  for (const auto& order : orders) {
    Walk(window);
    EXPECT_EQ(FocusOrder(window), order);
    if (Step() == 2) WalkRights();
    if (Step() < 4) WalkTo(Step() + 1);
  }
  QAccessibleInterface& bar = *QAccessible::queryAccessibleInterface(&Find("progress"));
  EXPECT_EQ(bar.role(), QAccessible::ProgressBar);
  dynamic_cast<IProgress&>(*Wizard().PageHandle("Four")).Bar(0.5);
  EXPECT_EQ(bar.valueInterface()->currentValue().toInt(), 50);
  const QImage seen = Find("progress").grab().toImage();
  EXPECT_NE(seen.pixelColor(seen.width() / 4, 3), seen.pixelColor(seen.width() * 3 / 4, 3));
}

TEST_P(Accessibility, SoAreTheBoxesAndTheHelp) {
  Start();
  std::filesystem::create_symlink(TARNWICK_SOURCE_DIR "/help", folder / "help");
  WalkTo(2);
  Key(Qt::Key_F1);
  ASSERT_TRUE(QTest::qWaitFor([this] { return QApplication::activeWindow() && !window.isActiveWindow(); }));
  QWidget* const help = QApplication::activeWindow();
  EXPECT_EQ(help->findChild<QTextBrowser*>("txtPage")->source().toString(), QLatin1String("Step2.htm"));
  Walk(*help);
  EXPECT_THAT(FocusOrder(*help), testing::ElementsAre("txtPage", "txtFind", "cmdCopy", "treContents"));
  help->close();

  int seen = 0;
  QTimer next;
  QObject::connect(&next, &QTimer::timeout, [&] {
    QWidget* const box = QApplication::activeModalWidget();
    if (box == nullptr || !box->isVisible()) return;
    Walk(*box);
    if (seen == 0) {
      EXPECT_THAT(FocusOrder(*box), testing::ElementsAre("Grid", "cmdHelp", "cmdDone", "txtDescription"));
    }
    if (box->close()) ++seen;
  });
  next.start(1);
  const HttpDouble site;
  WalkTo(3);
  Click("cmdWebUpdate");
  EXPECT_EQ(seen, 1);
  qt::QtUser real;
  real.MessageBox("Programming Complete\r\n\r\nCycle the power on the telescope at this point.",
                  ui::Buttons::YesNo, ui::Icon::Question);
  real.InputBox("Please Enter the Blocksize", "Blocksize Override", "4");
  EXPECT_EQ(seen, 3);
}

INSTANTIATE_TEST_SUITE_P(FontPixels, Accessibility, testing::Values(14, 21),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace tarnwick::test
