#include <tuple>

#include "ProgrammerFixture.h"
#include "programmer/PackageFit.h"

namespace tarnwick::test {
namespace {

const std::string kModel = "Model number doesn't match QAL file Model Number";
const std::string kRevision = "Hardware Revision doesn't match QAL file Hardware Revision";
const std::string kChange = "Invalid Change in Hardware Revision ";
const std::string kWarning =
    "Warning: Motor Controller model can not be determined.\r\n\r\n"
    "Ensure that the appropriate firmware is selected for the device being upgraded.\r\n\r\n";
const std::string kAsk = kWarning + "Do you wish to continue?";
const std::string kAskAtRisk = kWarning +
                               "Choosing an incorrect model can cause the mount to become unusable --\r\n\r\n"
                               "contact Halcyrion technical support if you are unsure.\r\n\r\n"
                               "Do you wish to continue?";

struct Case {
  std::string list;  // The package's revisions.
  std::int32_t packageModel;
  std::int32_t state, hwRev;                  // What the device answers now.
  std::int32_t model, hwRevApp, bootVersion;  // What the last refresh left in the row.
  std::string message;                        // Behind the prefix; empty when it passes without one.
};

class CompatibilityTest : public ProgrammerFixture {
 protected:
  bool Check(const Case& c) {
    user.boxes.clear();
    user.pumps = 0;
    Load(c.packageModel, c.list, {{"AZM", 16, CountedWords(3)}});
    link.devices[16].state = c.state;
    link.devices[16].hwRev = link.devices[16].bootHwRev = c.hwRev;
    gDevices[1].Model = c.model;
    gDevices[1].HwRevApp = c.hwRevApp;
    gDevices[1].BootVersion = c.bootVersion;
    return CheckCompatibility(1);
  }
};

TEST_F(CompatibilityTest, HoldsThePackageAgainstTheDevice) {
  const std::vector<Case> cases = {
      // The package lists revisions; running.
      {"5", 5, 1, 5, 6, 0, 0, kModel},
      {"4,3", 5, 1, 3, 5, 0, 0, ""},
      {"4,3", 5, 1, 5, 5, 0, 0, kRevision},
      // Not running: listed.
      {"5", 14, 2, 5, 0, 5, 1, ""},
      {"5", 14, 3, 5, 0, 0, 2, ""},
      {"4", 9, 2, 4, 0, 0, 0, kAskAtRisk},
      {"0", 9, 0, 0, 0, 0, 0, kAskAtRisk},
      // Not running: the true revision of 5 or 6 cannot be told.
      {"6", 13, 2, 5, 0, 0, 1, ""},
      {"5,6", 13, 2, 5, 0, 0, 1, kRevision},
      {"4", 13, 2, 5, 0, 0, 1, kRevision},
      // Not running: not listed.
      {"5", 13, 2, 6, 0, 6, 1, kRevision},
      {"5", 13, 2, 4, 0, 0, 0, kRevision},
      {"5", 13, 0, 5, 0, 0, 0, kRevision},
      // The package lists none; running.
      {"", 5, 1, 2, 6, 0, 0, kModel},
      {"", 5, 1, 2, 5, 0, 0, ""},
      {"", 6, 1, 2, 6, 0, 0, ""},
      {"", 3, 1, 0, 3, 0, 0, ""},
      {"", 3, 1, 2, 3, 0, 0, kChange},
      {"", 5, 1, 5, 5, 0, 0, kChange},
      // Not running: the package's model decides.
      {"", 5, 2, 2, 0, 0, 0, kAsk},
      {"", 6, 3, 2, 0, 0, 0, kAsk},
      {"", 3, 2, 2, 5, 0, 0, kChange},
      {"", 3, 2, 0, 0, 0, 0, kAsk},
      {"", 3, 7, 9, 0, 0, 0, kAsk},
      {"", 5, 2, 5, 0, 5, 1, kChange},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "list '" << c.list << "' P" << c.packageModel << " S" << c.state
                                    << " H" << c.hwRev << " M" << c.model);
    const bool question = c.message == kAsk || c.message == kAskAtRisk;
    const bool passes = question || c.message.empty();
    EXPECT_EQ(Check(c), passes);
    EXPECT_EQ(user.pumps, passes ? 0 : 1);
    const std::string box = (question ? "YesNo !|[AZM(RA) Motor] " : "Ok !|[AZM(RA) Motor] ") + c.message;
    EXPECT_EQ(user.boxes, Calls(c.message.empty() ? 0 : 1, box));
    if (!question) continue;
    user.answers = {ui::Answer::No};
    EXPECT_FALSE(Check(c));
    EXPECT_EQ(user.pumps, 1);
  }
}

TEST_F(CompatibilityTest, ComparesNothingUnderTheOverrideOrForAccessories) {
  const Case wrongModel{"5", 5, 1, 4, 6, 0, 0, kModel};
  gModelOverride = true;
  EXPECT_TRUE(Check(wrongModel));
  EXPECT_THAT(link.calls, ElementsAre("getMcState 16", "getHwRev 16"));
  gModelOverride = false;
  gDeviceClass = 1;
  EXPECT_TRUE(Check(wrongModel));
  EXPECT_THAT(user.boxes, IsEmpty());
  EXPECT_EQ(gDevices[1].HwRev, 4);
}

TEST_F(CompatibilityTest, MatchesRowsByAddressAlone) {
  Load(5, "", {{"X", 40, CountedWords(3)}, {"A", 17, CountedWords(3)}, {"B", 17, CountedWords(3)}});
  EXPECT_EQ(gDevices[1].QalIndex, 0);
  EXPECT_EQ(gDevices[2].QalIndex, 2);
  EXPECT_EQ(ImageRefusal(1), "No matching devices found in firmware file");
  EXPECT_EQ(ImageRefusal(2), "");
  gQAL->LoadQALfile({}, PackageText(5, "", {{"A", 17, {}}}));
  MatchPackageDevices();
  EXPECT_EQ(gDevices[2].QalIndex, 1);
  EXPECT_EQ(ImageRefusal(2), "Error 7 : No Data Found For Device at Line 12");
}

/// The refusal of a package with that list for rows of {model, revision, revision while running}.
class PackageFitTest : public ProgrammerFixture {
 protected:
  using Row = std::array<std::int32_t, 3>;
  std::string Refusal(const std::string& list, const Row& first, const Row& second) {
    user.boxes.clear();
    Load(5, list, devices);
    for (const std::int32_t row : {1, 2}) {
      const Row& is = row == 1 ? first : second;
      std::tie(gDevices[row].Model, gDevices[row].HwRev, gDevices[row].HwRevApp) =
          std::tie(is[0], is[1], is[2]);
    }
    return PackageFits() ? "" : user.LastBox();
  }

  std::vector<PackageDevice> devices{{"Azm", 16, CountedWords(3)}, {"Alt", 17, CountedWords(3)}};
  const std::string model = "Ok !|QAL file Model doesn't match Model on Motor Controller!";
  const std::string revision = "Ok !|QAL file HwRev doesn't match Model on Motor Controller!";
};

TEST_F(PackageFitTest, JudgesEachRowOfThePackageUnlessOverridden) {
  EXPECT_EQ(Refusal("", {5, 2, 0}, {0, 0, 0}), "");
  EXPECT_EQ(Refusal("", {5, 2, 0}, {6, 2, 0}), model);
  EXPECT_EQ(Refusal("5", {5, 5, 5}, {5, 4, 0}), "");
  EXPECT_EQ(Refusal("5", {5, 6, 6}, {5, 5, 5}), revision);
  EXPECT_EQ(Refusal("5", {0, 5, 5}, {5, 5, 5}), "");
  EXPECT_EQ(Refusal("5,6", {5, 5, 5}, {0, 5, 0}), revision);
  EXPECT_EQ(Refusal("4", {5, 4, 0}, {0, 5, 0}), revision);
  gModelOverride = true;
  EXPECT_EQ(Refusal("5", {6, 5, 5}, {6, 5, 5}), "");
  EXPECT_EQ(Refusal("5", {6, 5, 5}, {6, 6, 6}), revision);
  gModelOverride = false;
  gTypeOverride = true;
  EXPECT_EQ(Refusal("5", {0, 6, 6}, {0, 6, 6}), "");
  EXPECT_EQ(Refusal("5", {6, 5, 5}, {5, 5, 5}), model);
  gTypeOverride = false;
  EXPECT_EQ(Refusal("5", {0, 5, 5}, {0, 5, 0}), "");
  EXPECT_THAT(user.boxes, ElementsAre("YesNo !|" + kAskAtRisk)) << "Both rows undetermined: asked, once.";
  devices.pop_back();
  EXPECT_EQ(Refusal("5", {5, 5, 5}, {6, 6, 6}), "");
  devices[0].address = 40;
  EXPECT_EQ(Refusal("5", {5, 5, 5}, {5, 5, 5}), "Ok !|No matching devices found in firmware file");
}

}  // namespace
}  // namespace tarnwick::test
