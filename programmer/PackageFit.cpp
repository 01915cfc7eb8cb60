#include "programmer/PackageFit.h"

#include <string>
#include <string_view>

#include "PackageRules.h"
#include "firmware/QALclass.h"
#include "platform/ui.h"
#include "programmer/Compatibility.h"
#include "programmer/PackageJudge.h"

namespace tarnwick {
namespace {

constexpr std::string_view kWrongModel = "QAL file Model doesn't match Model on Motor Controller!";
constexpr std::string_view kWrongHwRev = "QAL file HwRev doesn't match Model on Motor Controller!";

bool Refuse(std::string_view text) {
  ui::MessageBox(text);
  return false;
}

}  // namespace

bool PackageFits() {
  if (gQAL->ErrorsFound()) return Refuse(PackageErrorText());
  MatchPackageDevices();
  switch (JudgeFit(*gQAL)) {
    case PackageFit::NoDevice:
      return Refuse(kNoMatch);
    case PackageFit::WrongModel:
      return Refuse(kWrongModel);
    case PackageFit::WrongHwRev:
      return Refuse(kWrongHwRev);
    case PackageFit::Undetermined:
      break;
    case PackageFit::Fits:
      return true;
  }
  const std::string question = std::string(kModelUnknown).append(kAtRisk).append(kContinue);
  return ui::MessageBox(question, ui::Buttons::YesNo, ui::Icon::Exclamation) == ui::Answer::Yes;
}

}  // namespace tarnwick
