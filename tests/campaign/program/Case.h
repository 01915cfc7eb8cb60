// What one case of the campaign is, and how it is drawn.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace tarnwick::campaign {

using Number = std::uint32_t;

/// What strikes in the midst of a run.
enum class Fault { None, Cut, Pull, HangUp, Cancel, Kill, Deleted, Replaced, FailedCall };

/// Which face of the program is played: its window, tarnwick-flash with a person, or alone.
enum class Face { Window, Terminal, Script };

/// One case: the mount, the packages, the settings, and what goes wrong when.
struct Case {
  std::int32_t model = 5;
  std::int32_t revision = 2;
  std::array<bool, 2> oldLoader{true, true};
  std::int32_t claims = -1;  ///< Revision that an old boot loader tells; -1 for the true one.
  bool firstVersion3 = false;
  bool handControl = false;
  int devices = 1;
  std::string list;   ///< Revisions that the package "main" names.
  std::string first;  ///< The package that the owner takes first.
  bool modelOverride = false, typeOverride = false;
  int blockSize = 0;  ///< What is answered where the settings ask for it; 0 where they do not.
  Fault fault = Fault::None;
  std::string call;      ///< Which kind of call fails.
  Number count = 1;      ///< The fault strikes at so many: blocks, events, calls.
  Number byte = 1;       ///< Of that block's exchange.
  bool between = false;  ///< A cancel comes behind the end of the first image.
  bool again = false;    ///< The recovery is cut once as well.
  Number againAt = 1;
  Face face = Face::Window;
  bool tell = false;  ///< What the owner reads and does is told on standard output.
};

/// The values of which each pair is played.
enum Dimension : std::size_t {
  Model,
  Revision,
  Loader,
  Link,
  Devices,
  List,
  First,
  Overrides,
  Blocks,
  Faults,
  Again,
  Faces,
  kDimensions
};
using Draw = std::array<std::size_t, kDimensions>;

/// The names of a dimension's values.
const std::vector<const char*>& NamesOf(std::size_t dimension);
/// What is drawn under that number, where the values of `draw` leave it open.
Case CaseOf(const Draw& draw, Number seed, Number number);
/// How many blocks one device takes, its boot package included.
Number BlocksOf(const Case& c);

/// Highest word of each image: full to its last word, without padding.
constexpr std::int32_t kLastWord = 95;
constexpr std::array<std::int32_t, 2> kAddresses = {16, 17};

/// An image, told by a number.
using Variant = int;
/// Whoever takes the place of the package "main" in the midst of a run.
constexpr Variant kReplaced = 1;
constexpr Variant kVariants = 5;
std::vector<std::int32_t> ImageOf(Variant variant);

/// The packages at hand: "main", "foreign" of another model, "others" for other revisions, and "only1" to
/// "only6", which name one revision alone.
const std::vector<std::string>& PackageNames();
Variant VariantOf(const std::string& package);
/// The text of a package. `replaced`: of what takes the place of "main".
const std::string& PackageOf(const Case& c, const std::string& package, bool replaced = false);

}  // namespace tarnwick::campaign
