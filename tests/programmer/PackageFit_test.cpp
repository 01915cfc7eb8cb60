#include "programmer/PackageFit.h"

#include "ProgrammerFixture.h"

namespace tarnwick::test {
namespace {

const std::string kModel = "QAL file Model doesn't match Model on Motor Controller!";
const std::string kRevision = "QAL file HwRev doesn't match Model on Motor Controller!";

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
    std::string refusal;
  };
  const std::vector<Case> cases = {
      {"", {5, 2, 0}, {0, 0, 0}, ""},         {"", {5, 2, 0}, {6, 2, 0}, kModel},
      {"5", {5, 5, 5}, {5, 4, 0}, ""},        {"5", {5, 6, 6}, {5, 5, 5}, kRevision},
      {"5", {0, 5, 5}, {5, 5, 5}, ""},        {"5,6", {5, 5, 5}, {0, 5, 0}, kRevision},
      {"4", {5, 4, 0}, {0, 5, 0}, kRevision},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << &c - cases.data());
    EXPECT_EQ(Fits(c.list, c.first, c.second), c.refusal.empty());
    EXPECT_EQ(BoxTexts(), c.refusal.empty() ? Texts{} : Texts{c.refusal});
  }
  EXPECT_TRUE(Fits("5", {0, 5, 5}, {0, 5, 0}));  // Both rows undetermined: asked, once.
  EXPECT_EQ(user.boxes.size(), 1U);
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
}

}  // namespace
}  // namespace tarnwick::test
