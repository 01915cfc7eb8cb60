#include "Case.h"

#include <algorithm>
#include <tuple>

#include "mount/Lies.h"
#include "support/PackageText.h"

namespace tarnwick::campaign {
namespace {

constexpr std::size_t kFirstCall = 8;  ///< From there on in the names of faults, a call of that name fails.

const std::array<std::vector<const char*>, kDimensions> kNames = {{
    {"1 with 3.00", "1", "5", "6", "14"},
    {"1", "2", "3", "4", "5", "6"},
    {"old boot loader", "new boot loader", "old and new"},
    {"direct", "hand control"},
    {"one device", "two devices"},
    {"no HWREV", "one HWREV", "several HWREV", "several, turned round"},
    {"its package first", "another model's first", "other revisions' first"},
    {"no override", "ModelOverride", "TypeOverride", "both overrides"},
    {"blocks as they are", "blocks of 1", "blocks of 2", "blocks of 4"},
    {"no fault", "cut", "pull", "port lost", "cancel", "kill", "deleted", "replaced", "state", "model",
     "revision", "boot-revision", "boot-version", "read", "enter", "start", "send", "end"},
    {"recovered in peace", "recovery cut"},
    {"window", "terminal", "script"},
}};

std::string ListOf(const Draw& draw, int revision) {
  const bool new5 = revision >= 5;
  if (draw[List] == 0) return "";
  if (draw[List] == 1) return std::to_string(revision);
  if (draw[List] == 2) return new5 ? "5,6" : "1,2,3,4";
  return new5 ? "6,5" : "4,3,2,1";
}

/// Version 5.12; no image begins as a boot package does.
test::ImageWords WordsOf(Variant variant) {
  test::ImageWords words = test::CountedWords(kLastWord);
  for (auto& [word, value] : words) value += 0x100 * variant;
  const std::array<std::int32_t, 4> version = {0x1A5A, 0x25A5, 5, 12};
  for (std::int32_t i = 0; i < 4; ++i) words[8 + i] = version[static_cast<std::size_t>(i)];
  return words;
}

}  // namespace

const std::vector<const char*>& NamesOf(std::size_t dimension) {
  return kNames[dimension];
}

Number BlocksOf(const Case& c) {
  const Number size =
      c.blockSize == 0 ? (c.handControl || c.revision != 0 ? 1 : 2) : static_cast<Number>(c.blockSize);
  const Number boot = c.revision == 2 ? 116 : c.revision >= 5 ? 1600 : 0;
  return (kLastWord + 1 + (c.oldLoader[0] || c.oldLoader[1] ? boot : 0)) / size;
}

Case CaseOf(const Draw& draw, Number seed, Number number) {
  mount::Dice dice;
  dice.Seed(seed * 1'000'003U + number);
  Case c;
  constexpr std::array kNumbers = {1, 1, 5, 6, 14};
  c.model = kNumbers[draw[Model]];
  c.firstVersion3 = draw[Model] == 0;
  c.revision = static_cast<std::int32_t>(draw[Revision]) + 1;
  c.oldLoader = {draw[Loader] != 1, draw[Loader] == 0};
  c.handControl = draw[Link] == 1;
  c.devices = static_cast<int>(draw[Devices]) + 1;
  c.list = ListOf(draw, c.revision);
  c.first = PackageNames()[draw[First]];
  c.modelOverride = draw[Overrides] % 2 == 1;
  c.typeOverride = draw[Overrides] >= 2;
  constexpr std::array kBlockSizes = {0, 1, 2, 4};
  c.blockSize = kBlockSizes[draw[Blocks]];
  if (c.revision >= 5 && dice.Below(2) == 1) c.claims = 5 + static_cast<std::int32_t>(dice.Below(2));
  const bool call = draw[Faults] >= kFirstCall;
  c.fault = call ? Fault::FailedCall : static_cast<Fault>(draw[Faults]);
  if (call) c.call = kNames[Faults][draw[Faults]];
  const Number blocks = BlocksOf(c) * static_cast<Number>(c.devices);
  // Of most kinds a run makes a few calls only.
  const bool few = c.call == "read" || c.call == "enter" || c.call == "start" || c.call == "end";
  const Number calls = c.call == "send" ? blocks : few ? 2 : 6;
  c.count = 1 + dice.Below(call ? calls : c.fault == Fault::Cancel ? blocks + 40 : blocks);
  c.byte = 1 + dice.Below(16);
  c.between = c.byte > 8;
  c.again = draw[Again] == 1;
  c.face = static_cast<Face>(draw[Faces]);
  c.againAt = 1 + dice.Below(blocks * 14);
  return c;
}

std::vector<std::int32_t> ImageOf(Variant variant) {
  std::vector<std::int32_t> image;
  for (const auto& [word, value] : WordsOf(variant)) image.push_back(value);
  return image;
}

const std::vector<std::string>& PackageNames() {
  static const std::vector<std::string> kPackages = {"main",  "foreign", "others", "only1", "only2",
                                                     "only3", "only4",   "only5",  "only6"};
  return kPackages;
}

Variant VariantOf(const std::string& package) {
  if (package == "main") return 0;
  return package == "foreign" ? 2 : package == "others" ? 3 : 4;
}

const std::string& PackageOf(const Case& c, const std::string& package, bool replaced) {
  const Variant variant = replaced ? kReplaced : VariantOf(package);
  const std::int32_t model = package == "foreign" ? (c.model == 5 ? 6 : 5) : c.model;
  const std::string others = c.revision >= 5 ? "1,2,3,4" : "5,6";
  const std::string list = variant == 4 ? package.substr(4) : variant == 3 ? others : c.list;
  static std::map<std::tuple<std::int32_t, std::string, int, Variant>, std::string> made;
  std::string& text = made[{model, list, c.devices, variant}];
  if (!text.empty()) return text;
  std::vector<test::PackageDevice> devices{{"Azm", kAddresses[0], WordsOf(variant), "0512"}};
  if (c.devices == 2) devices.push_back({"Alt", kAddresses[1], WordsOf(variant), "0512"});
  return text = test::PackageText(model, list, devices);
}

}  // namespace tarnwick::campaign
