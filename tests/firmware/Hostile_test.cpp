// Texts and circumstances that nobody wishes on a loader.
#include <gmock/gmock.h>

#include <chrono>
#include "FailingMemory.h"
#include "PackageText.h"
#include "firmware/BootPackages.h"

namespace tarnwick::test {
namespace {

TEST(HostilePackage, SurvivesEveryFailingAllocation) {
  const std::string text = "HWREV=5,6\r\n" + BootJumpFixText();
  QALclass package;
  int failures = 0;
  for (;; ++failures) {
    gAllocationsLeft = failures;
    package.LoadQALfile({}, text);
    gAllocationsLeft = -1;
    if (!package.ErrorsFound()) break;
    ASSERT_EQ(Outcome(package), "1 : QAL File Not Found at 0");
    ASSERT_EQ(package.Devices(), 0);
  }
  EXPECT_GT(failures, 10);
  EXPECT_EQ(package.Devices(), 2);
}

/// The allowance is for a sanitized debug build on a busy machine; a loader whose cost grows with
/// anything but the size of the text passes it by orders of magnitude.
TEST(HostilePackage, CostsNoMoreThanItsSize) {
  const std::string device = "DEVICE_ADDRESS_VERSION=a,1,b\r\n";
  std::string manyDevices;
  for (int i = 0; i < 50000; ++i) manyDevices += device;
  const std::string top = ":02FFFE001A2BBC\r\n";
  const struct {
    const char* what;
    std::string head;
    std::string repeated;
    std::size_t size;
    std::string_view outcome;
  } cases[] = {
      {"junk lines", "", "junk\r\n", 64u << 20, "0"},
      {"one endless line", "", "junk", 16u << 20, "0"},
      {"carriage returns", "", "\r", 4u << 20, "0"},
      {"a list of a million revisions", "HWREV=", ",", 1u << 20, "0"},
      {"a device with a million fields", "DEVICE_ADDRESS_VERSION=", ",", 1u << 20,
       "7 : No Data Found For Device at 1"},
      {"a number of a million digits", "MODELNUMBER=", "9", 1u << 20, "0"},
      {"devices and records in turn", device + "START_HEX=b\r\n", device + top + ":02000200FFEE0F\r\n",
       4u << 20, "0"},
      {"many devices, then a long block", manyDevices + "START_HEX=b\r\n", top, 4u << 20, "0"},
  };
  for (const auto& c : cases) {
    std::string block;
    while (block.size() < 4096) block += c.repeated;
    std::string text = c.head;
    while (text.size() < c.size) text += block;
    text += "\r\n";
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Outcome(Loaded(text)), c.outcome) << c.what;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20)) << c.what;
  }
}

TEST(HostilePackage, EndsSoundlyWithAnyByteChanged) {
  const std::string good =
      Lines({"FILEVER=12", "HWREV=5", "DEVICE_ADDRESS_VERSION=a, 16, x0102", "START_HEX=x0102",
             ":080000000A128A111028000009", ":00000001FF", "END_HEX=x0102"});
  ASSERT_EQ(Outcome(Loaded(good)), "0");
  for (std::size_t at = 0; at < good.size(); ++at) {
    for (const char byte : std::string_view("\0\t\n\r ,-.:;=0129AFGafx\x7F\xE4\xFF", 24)) {
      std::string text = good;
      text[at] = byte;
      const QALclass package = Loaded(text);
      ASSERT_LE(package.LastErrorLine(), 8);
      if (package.ErrorsFound()) continue;
      for (std::int32_t device = 1; device <= package.Devices(); ++device) {
        ASSERT_EQ((package.DeviceWords(device) + 1) % 4, 0);
        ASSERT_EQ(ImageText(package, device).find('-'), std::string::npos) << text;
      }
    }
  }
}

}  // namespace
}  // namespace tarnwick::test
