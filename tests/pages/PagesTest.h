// The four pages over a scripted link: two running controllers, and a package "A.qal" that fits them.
#pragma once

#include <algorithm>

#include "link/Connection.h"
#include "support/LinkDouble.h"
#include "support/PackageText.h"
#include "support/ProgramTest.h"

namespace tarnwick::test {

inline const std::vector<PackageDevice> kBoth{{"Azm", 16, CountedWords(3)}, {"Alt", 17, CountedWords(3)}};
inline const std::string kBroken = PackageText(5, "5", kBoth) + "START_HEX=FW0_0415\r\n:00\r\n";
inline const std::string kBrokenError = "Error 2 : Hex Line Too Short at Line " +
                                        std::to_string(std::count(kBroken.begin(), kBroken.end(), '\n'));

class PagesTest : public ProgramTest {
 public:
  PagesTest() {
    std::filesystem::create_symlink("/dev/null", folder / "ports/COM5");
    for (const std::int32_t address : {16, 17, 18, 19}) {
      ScriptedDevice device{.state = 1, .major = 4, .minor = 15, .model = 5, .hwRev = 5, .bootHwRev = 5};
      device.memory = CountedWords(3);
      device.memory[0xFFFC] = 1;
      link.devices[address] = device;
    }
    Put("A.qal", PackageText(5, "5", kBoth));
  }
  void Put(const std::string& name, const std::string& content) {
    WriteFile(folder / "MotorControllers" / name, content);
  }
  /// The link calls so far but for the version's, and none from now on.
  std::vector<std::string> Calls() {
    std::erase(link.calls, "getDllVersion");
    return std::exchange(link.calls, {});
  }
  ScriptedDevice& Azm() { return link.devices[16]; }
  ScriptedDevice& Alt() { return link.devices[17]; }
  CWizard& Wizard() { return gController->WizardHandle(); }

  LinkDouble link;
};

}  // namespace tarnwick::test
