#include "programmer/PackageFit.h"

#include "ProgrammerFixture.h"

namespace tarnwick::test {
namespace {

const std::string kModel = "QAL file Model doesn't match Model on Motor Controller!";
const std::string kRevision = "QAL file HwRev doesn't match Model on Motor Controller!";
const Box kQuestion{
    "Warning: Motor Controller model can not be determined.\r\n\r\n"
    "Ensure that the appropriate firmware is selected for the device being upgraded.\r\n\r\n"
    "Choosing an incorrect model can cause the mount to become unusable --\r\n\r\n"
    "contact Halcyrion technical support if you are unsure.\r\n\r\n"
    "Do you wish to continue?",
    ui::Buttons::YesNo, ui::Icon::Exclamation};

struct Row {
  std::int32_t model, hwRev, hwRevApp;
};

class PackageFitTest : public ProgrammerFixture {
 protected:
  bool Fits(const std::string& list, const Row& first, const Row& second) {
    user.boxes.clear();
    Load(5, list, devices);
    std::int32_t row = 0;
    for (const Row& r : {first, second}) {
      DeviceEntry& device = gDevices[++row];
      device.Model = r.model, device.HwRev = r.hwRev, device.HwRevApp = r.hwRevApp;
    }
    return PackageFits();
  }

  std::vector<PackageDevice> devices{{"Azm", 16, CountedWords(3)}, {"Alt", 17, CountedWords(3)}};
};

TEST_F(PackageFitTest, JudgesTheRows) {
  struct Case {
    std::string list;
    Row first, second;
    Texts boxes;  // Of the refusal, or of the question when it is answered Yes.
    bool fits;
  };
  const std::vector<Case> cases = {
      {"", {5, 2, 0}, {0, 0, 0}, {}, true},
      {"", {5, 2, 0}, {6, 2, 0}, {kModel}, false},
      {"5", {5, 5, 5}, {5, 4, 0}, {}, true},
      {"5", {5, 6, 6}, {5, 5, 5}, {kRevision}, false},
      {"5", {0, 5, 5}, {5, 5, 5}, {}, true},
      {"5", {0, 5, 5}, {0, 5, 0}, {kQuestion.text}, true},
      {"5,6", {5, 5, 5}, {0, 5, 0}, {kRevision}, false},
      {"4", {5, 4, 0}, {0, 5, 0}, {kRevision}, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << &c - cases.data());
    EXPECT_EQ(Fits(c.list, c.first, c.second), c.fits);
    EXPECT_EQ(BoxTexts(), c.boxes);
  }
  user.answers = {ui::Answer::No};
  EXPECT_FALSE(Fits("5", {0, 5, 5}, {0, 5, 5}));
  EXPECT_THAT(user.boxes, ElementsAre(kQuestion));
}

TEST_F(PackageFitTest, EachOverrideSkipsItsOwnRule) {
  gModelOverride = true;
  EXPECT_TRUE(Fits("5", {6, 5, 5}, {6, 5, 5}));
  EXPECT_FALSE(Fits("5", {6, 5, 5}, {6, 6, 6}));
  gModelOverride = false;
  gTypeOverride = true;
  EXPECT_TRUE(Fits("5", {0, 6, 6}, {0, 6, 6}));
  EXPECT_THAT(user.boxes, IsEmpty());
  EXPECT_FALSE(Fits("5", {6, 5, 5}, {5, 5, 5}));
}

TEST_F(PackageFitTest, JudgesOnlyDevicesOfThePackage) {
  devices.pop_back();
  EXPECT_TRUE(Fits("5", {5, 5, 5}, {6, 6, 6}));
  devices[0].address = 40;
  EXPECT_FALSE(Fits("5", {5, 5, 5}, {5, 5, 5}));
  EXPECT_THAT(user.boxes, ElementsAre(Exclaim("No matching devices found in firmware file")));
  devices[0].words.clear();
  EXPECT_FALSE(Fits("5", {5, 5, 5}, {5, 5, 5}));
  EXPECT_THAT(user.boxes, ElementsAre(Exclaim(PackageErrorText())));
}

}  // namespace
}  // namespace tarnwick::test
