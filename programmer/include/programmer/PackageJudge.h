// Whether a package fits the mount on the line, told without a box and without touching the one that is
// selected.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "firmware/QALclass.h"

namespace tarnwick {

enum class PackageFit {
  Fits,
  Undetermined,  ///< Both motors cannot tell what they are: the user is asked.
  NoDevice,      ///< It is for devices at other addresses.
  WrongModel,
  WrongHwRev,
};

/// Holds a package that loaded without an error against the table of devices. The links of the rows to the
/// package's devices are neither looked at nor made.
PackageFit JudgeFit(const QALclass& package);

/// What the page with the packages says of one.
struct PackageOpinion {
  enum class Kind {
    Fits,
    MayFit,      ///< Whether it does cannot be told: there is no mount, or it cannot tell its model.
    DoesNotFit,  ///< It would be refused.
  };
  Kind kind = Kind::MayFit;
  std::string text = {};
};

/// Judges packages one after the other.
class PackageJudge {
 public:
  PackageJudge() { mPackage.Quiet(); }
  PackageOpinion Judge(const std::filesystem::path& package);

 private:
  QALclass mPackage;
};

}  // namespace tarnwick
