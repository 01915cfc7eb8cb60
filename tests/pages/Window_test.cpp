// The frame's window round the real pages: keys, focus and place. Keys before real message boxes the campaign of
// the hands presses.
#include <stdexcept>

#include "PagesTest.h"
#include "widgets/Controls.h"
#include "widgets/Scale.h"

namespace tarnwick::test {
namespace {

class Keys : public PagesTest {};

TEST_F(Keys, ActOnTheirReleaseOnWhatIsLive) {
  Start();
  constexpr Qt::KeyboardModifiers kNone, kAlt = Qt::AltModifier, kShift = Qt::ShiftModifier;
  // The page and whether it is locked, the key; the page gone to, or what else comes of it.
  using Case = std::tuple<int, bool, Qt::Key, Qt::KeyboardModifiers, std::string>;
  for (const auto& [page, locked, key, modifiers, expected] :
       {Case{1, false, Qt::Key_Return, kNone, "2"}, Case{1, false, Qt::Key_Enter, Qt::KeypadModifier, "2"},
        Case{1, false, Qt::Key_Return, kAlt, ""}, Case{2, true, Qt::Key_Return, kNone, ""},
        Case{4, false, Qt::Key_Return, kNone, "box"}, Case{1, false, Qt::Key_Escape, kNone, "box"},
        Case{1, false, Qt::Key_Escape, kShift, ""}, Case{1, true, Qt::Key_Escape, kNone, ""},
        Case{4, true, Qt::Key_Escape, kNone, "box"}, Case{1, false, Qt::Key_Right, kAlt, "2"},
        Case{1, false, Qt::Key_Right, kAlt | kShift, ""}, Case{1, false, Qt::Key_Right, kNone, ""},
        Case{1, true, Qt::Key_Right, kAlt, ""}, Case{4, false, Qt::Key_Right, kAlt, ""},
        Case{1, false, Qt::Key_Left, kAlt, ""}, Case{2, true, Qt::Key_Left, kAlt, ""},
        Case{2, false, Qt::Key_Left, kAlt, "1"}}) {
    SCOPED_TRACE(testing::Message() << key << " on " << page << (locked ? ", locked" : ""));
    Wizard().StepTo(static_cast<double>(page));
    Wizard().Frozen(locked);
    user.answers = {ui::Answer::No};
    user.beeps = 0;
    const auto done = [&, page = page] {
      const std::string to = Step() == page ? "" : std::to_string(Step());
      return to + (user.boxes.empty() ? "" : "box") + (user.beeps == 0 ? "" : "beep");
    };
    QTest::keyRelease(window.windowHandle(), key, modifiers);  // Went down elsewhere.
    QTest::keyPress(window.windowHandle(), key, modifiers);
    EXPECT_EQ(done(), "");
    QTest::keyRelease(window.windowHandle(), key, modifiers);
    EXPECT_EQ(done(), expected);
    Wizard().Frozen(false);
    Said();
  }
}

class Window : public PagesTest {
 public:
  Window() { Start(); }
};

TEST_F(Window, AFailureOnTheWayToAPageLeavesNoStepUnderWay) {
  WalkTo(2);
  Find<QComboBox>("cboComPort").setCurrentText(QStringLiteral("COM5"));
  link.log = [](const std::string& call) { throw std::runtime_error(call); };
  Click("cmdStepFwd");
  link.log = {};
  EXPECT_EQ(Step(), 3);
  Wizard().Step(-1);
  EXPECT_EQ(Step(), 2);
}

TEST_F(Window, FitsItsPageAndStaysWhereTheUserPutIt) {
  EXPECT_EQ(window.size(), QSize(Scaled(439), Scaled(275)));
  window.move(3, 5);
  WalkTo(2);
  EXPECT_EQ(window.pos(), QPoint(3, 5));
  WalkTo(3);
  EXPECT_EQ(window.width(), Scaled(604));
  EXPECT_NE(window.pos(), QPoint(3, 5));
  const QWidget& next = Find("cmdStepFwd");
  EXPECT_EQ(QCursor::pos(), next.mapToGlobal(QPoint(next.width() / 2, next.height() / 2)));
}

/// A box whose bar came as needed would keep the program busy for ever at some of these sizes.
TEST_F(Window, NoTextKeepsItsBoxBusy) {
  TextBox box(nullptr, "box", QStringLiteral("Box"));
  box.show();
  const std::string line =
      "AZM(RA) Motor (last seen: Vendral Corvane, HwRev 2): stopped at 26 %. Not lost. Check power and "
      "cable, "
      "stay on this page, choose the motor and press Begin Programming again. Do not go back: that would "
      "forget which hardware revision it is.";
  for (int height = 20; height < 130; ++height) {
    for (const int width : {120, 200, 300, 439, 452, 470}) {
      box.resize(width, height);
      for (const std::string& text :
           {line, line + "\r\nALT(DEC) Motor: not touched.", std::string("one"), line + "\r\n" + line}) {
        box.Text(text);
        QCoreApplication::processEvents();  // Comes back.
      }
    }
  }
}

}  // namespace
}  // namespace tarnwick::test
