// The real program over the real link library and the mount's process, in bad luck.
#include "link/LinkLibrary.h"
#include "mount/MountProcess.h"
#include "support/PackageText.h"
#include "support/ProgramTest.h"

namespace tarnwick::test {
namespace {

using testing::ElementsAre;
namespace fs = std::filesystem;

class System : public ProgramTest {
 public:
  System() {
    fs::copy(TARNWICK_LIBRARY, folder / "Tarnwick.so");
    const PackageDevice azm{"Azm", 16, CountedWords(51), "0402"};
    WriteFile(folder / "MotorControllers/A.qal", PackageText(5, "", {azm, {"Alt", 17, azm.words, "0402"}}));
  }
  ~System() override { Seam<ILinkLibrary>::Uninstall(); }
  void StartWithMount() {
    ASSERT_TRUE(mount.Start(TARNWICK_MOUNT, folder / "ports/COM5", {}));
    library = LoadLinkLibrary(folder / "Tarnwick.so");
    Seam<ILinkLibrary>::Install(*library);
    Start();
  }

  std::unique_ptr<ILinkLibrary> library;
  mount::MountProcess mount;
};

TEST_F(System, ManyAndLargeAndVanishedPackages) {
  const std::string fits = ReadFile(folder / "MotorControllers/A.qal");
  for (int i = 10000; i < 20000; ++i)
    WriteFile(folder / "MotorControllers" / ("p" + std::to_string(i) + ".qal"), "");
  std::string large = fits;
  while (large.size() < (64u << 20)) large += std::string(998, ';') + "\r\n";
  WriteFile(folder / "MotorControllers/B.qal", large);
  StartWithMount();
  WalkTo(3);
  EXPECT_EQ(Items("lstFirmware").size(), 10002U);
  ClickRow("lstFirmware", 10001);
  Click("cmdStepFwd");
  EXPECT_THAT(Said(), ElementsAre("Ok !|No matching devices found in firmware file"));
  fs::remove(folder / "MotorControllers/A.qal");
  ClickRow("lstFirmware", 0);
  EXPECT_EQ(Text("txtFirmware"), "Error 1 : QAL File Not Found at Line 0");
  Click("cmdStepFwd");
  EXPECT_THAT(Said(), ElementsAre("Ok !|Error 1 : QAL File Not Found at Line 0"));
  ExpectAtRest();
  ClickRow("lstFirmware", 1);
  Click("cmdStepFwd");
  EXPECT_EQ(Step(), 4) << testing::PrintToString(Said());
}

}  // namespace
}  // namespace tarnwick::test
