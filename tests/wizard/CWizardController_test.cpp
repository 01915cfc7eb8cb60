#include "wizard/CWizardController.h"

#include <gmock/gmock.h>

#include "firmware/QALclass.h"
#include "link/Connection.h"
#include "platform/help.h"
#include "platform/program.h"
#include "programmer/modProgrammer.h"
#include "settings/modDebug.h"
#include "support/ClockDouble.h"
#include "support/FrameDouble.h"
#include "support/LinkDouble.h"
#include "support/ResetGlobals.h"
#include "support/TempFolder.h"
#include "support/UserDouble.h"
#include "wizard/modWizard.h"

namespace tarnwick::test {
namespace {

using testing::ElementsAre;
namespace fs = std::filesystem;

class HelpDouble final : public help::IHelpViewer {
 public:
  HelpDouble() { help::Install(*this); }
  ~HelpDouble() override { help::Uninstall(); }
  void Show(const fs::path& folder, std::string_view topic) override {
    shown.push_back((folder / topic).string());
  }
  std::vector<std::string> shown;
};

/// Started in a folder that is not the program's own, with a port and a trace in the settings.
class ControllerTest : public testing::Test {
 protected:
  ControllerTest() {
    ResetGlobals();
    gController = nullptr;
    fs::current_path(startFolder.Path());
    WriteFile(startFolder / "debugexe.txt", "the run before");
    WriteFile(folder / "Tarnwick.ini", "[TARNWICK]\r\nCOMport = COM3\r\nDebugFilter4 = True\r\n");
    program::Set({folder.Path(), "Tarnwick", 2, 2, 4});
    program::SetEnd([this] { frame.Note("End"); });
    user.log = link.log = [this](const std::string& line) { frame.Note(line); };
  }
  ~ControllerTest() override {
    program::SetEnd({});
    CloseDebugLog();
    fs::current_path(fs::temp_directory_path());
    gController = nullptr;
  }
  PageFactory Factory(const std::string& name) {
    return [this, name] {
      frame.Note("make " + name);
      return std::make_unique<PageDouble>(frame, name);
    };
  }
  void Run() {
    controller = Main(frame, {Factory("One"), Factory("Two"), Factory("Three"), Factory("Four")});
  }
  CWizard& Wizard() { return gController->WizardHandle(); }
  bool TerminateLive() const { return frame.Enabled(FrameButton::cmdTerminate); }
  /// Whether the frame stays when it is asked to close.
  bool Stays() {
    bool cancel = false;
    Wizard().Form_QueryUnload(cancel);
    return cancel;
  }

  TempFolder folder, startFolder;
  ClockDouble clock;
  UserDouble user;
  LinkDouble link;
  HelpDouble viewer;
  FrameDouble frame;
  std::unique_ptr<CWizardController> controller;
};

TEST_F(ControllerTest, TheWholeStartIsOneOrder) {
  frame.onCall = [&](const std::string& line) {
    EXPECT_EQ(gController, nullptr) << line;
    if (line.starts_with("FrameCaption")) {
      EXPECT_EQ(ReadFile(startFolder / "debugexe.txt"), "");
    }
    if (line != "make One") return;
    EXPECT_EQ(fs::current_path(), fs::canonical(folder.Path()));
    EXPECT_EQ(gComPort, "COM3");
    EXPECT_NE(gQAL, nullptr);
  };
  gQAL.reset();
  Run();
  EXPECT_EQ(gController, controller.get());
  EXPECT_EQ(Wizard().ClientHandle(), gController);
  EXPECT_FALSE(fs::exists(folder / "debugexe.txt"));
  EXPECT_THAT(
      frame.calls,
      ElementsAre("FrameCaption Tarnwick  v2.2.4", "debugFilter 4", "make One", "make Two", "make Three",
                  "make Four", "LoadFrame", "LoadPage One", "AttachPage One", "One BeforePageShow 0",
                  "SetPageVisible One on", "LayoutFrame One centre", "Enabled cmdStepBack on",
                  "Enabled cmdStepFwd on", "Default cmdStepFwd on", "Default cmdTerminate off",
                  "PageAreaTabPosition 5", "FocusPageArea", "Enabled cmdStepBack off", "ShowFrame"));
}

TEST_F(ControllerTest, TheWayOutIsOneOrder) {
  Run();
  frame.Take();
  frame.onCall = [&](const std::string& line) {
    if (line == "box") {
      EXPECT_NE(gDebugFile, nullptr);
    }
    if (line == "initSerial ") {
      EXPECT_EQ(gQAL, nullptr);
    }
    if (line != "SetPageVisible One off") return;
    EXPECT_EQ(gDebugFile, nullptr);
    EXPECT_THAT(ReadFile(folder / "Tarnwick.ini"), testing::HasSubstr("COM3"));
  };
  WriteFile(folder / "Tarnwick.ini", "");
  Wizard().cmdTerminate_Click();
  std::vector<std::string> calls = frame.Take();
  EXPECT_EQ(std::erase(calls, "PumpEvents"), 20U);
  EXPECT_THAT(calls, ElementsAre("RequestClose", "box", "initSerial ", "SetPageVisible One off",
                                 "DetachPage One", "UnloadPage One", "ShowShutdown", "End"));
}

TEST_F(ControllerTest, ExitIsAskedAndNoOrEscapeKeepsEverything) {
  Run();
  user.answers = {ui::Answer::No};
  EXPECT_TRUE(Stays());
  EXPECT_THAT(user.boxes, ElementsAre(Box{"Are you sure you want to Exit the program?", ui::Buttons::YesNo,
                                          ui::Icon::Question}));
  EXPECT_NE(gDebugFile, nullptr);
  EXPECT_TRUE(TerminateLive());
  EXPECT_FALSE(Stays());
  EXPECT_EQ(gDebugFile, nullptr);
}

TEST_F(ControllerTest, VerifyingIsStoppedWithoutAQuestionAndBeforeProgramming) {
  Run();
  gVerifying = gProgramming = true;
  EXPECT_TRUE(Stays());
  EXPECT_TRUE(user.boxes.empty());
  EXPECT_TRUE(gCancelVerify);
  EXPECT_FALSE(gCancelProgram);
  EXPECT_FALSE(TerminateLive());
}

TEST_F(ControllerTest, ProgrammingIsStoppedOnlyWhenConfirmed) {
  Run();
  gProgramming = true;
  frame.onCall = [&](const std::string& line) {
    if (line == "box") {
      EXPECT_FALSE(TerminateLive());
    }
  };
  for (const bool confirmed : {false, true}) {
    user.answers = {confirmed ? ui::Answer::Yes : ui::Answer::No};
    EXPECT_TRUE(Stays());
    EXPECT_EQ(gCancelProgram, confirmed);
    EXPECT_EQ(TerminateLive(), !confirmed);
    EXPECT_EQ(
        user.boxes.back(),
        (Box{"Cancelling Programming at this stage would leave the device in Program mode\r\nmaking the "
             "firmware unusable until reprogrammed!\r\n\r\nAre you sure you want to Cancel Programming?",
             ui::Buttons::YesNo, ui::Icon::Critical}));
  }
  EXPECT_NE(gDebugFile, nullptr);
  EXPECT_FALSE(gCancelVerify);
}

TEST_F(ControllerTest, HelpShowsTheTopicOfThePage) {
  Run();
  const std::string help = (folder.Path() / "help").string();
  for (int step = 1; step <= 4; ++step) {
    Wizard().StepTo(static_cast<double>(step));
    Wizard().cmdHelp_Click();
    EXPECT_EQ(viewer.shown.back(), help + "/Step" + std::to_string(step) + ".htm");
  }
  Wizard().AddPage(Factory("Five")(), "Five");
  Wizard().Step(1);
  Wizard().cmdHelp_Click();
  EXPECT_EQ(viewer.shown.size(), 4U);
}

}  // namespace
}  // namespace tarnwick::test
