#include <tuple>

#include "ProgrammerFixture.h"
#include "programmer/PackageFit.h"

namespace tarnwick::test {
namespace {

const std::string kAskAtRisk =
    "Warning: Motor Controller model can not be determined.\r\n\r\n"
    "Ensure that the appropriate firmware is selected for the device being upgraded.\r\n\r\n"
    "Choosing an incorrect model can cause the mount to become unusable --\r\n\r\n"
    "contact Halcyrion technical support if you are unsure.\r\n\r\n"
    "Do you wish to continue?";

using CompatibilityTest = ProgrammerFixture;

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
