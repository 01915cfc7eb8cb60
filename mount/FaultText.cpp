// How faults are told in words: by options and by commands alike.
#include <charconv>
#include <limits>
#include <utility>

#include "linklib/CommandNames.h"
#include "mount/Faults.h"
#include "mount/Options.h"

namespace tarnwick::mount {
namespace {

using Words = std::vector<std::string_view>;

/// A command as the words of a fault name it: in lower case, with a hyphen between its words, and all blocks
/// as "write".
std::string FaultName(std::string_view name) {
  std::string word;
  for (const char c : name) {
    const bool capital = c >= 'A' && c <= 'Z';
    if (capital && !word.empty()) word += '-';
    if (capital || (c >= 'a' && c <= 'z')) word += capital ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return word;
}

/// A share from 0 to 1.
bool ParseRate(std::string_view text, double& rate) {
  double value = -1;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  const bool good = error == std::errc() && stop == end && value >= 0 && value <= 1;
  if (good) rate = value;
  return good;
}

template <class Number>
bool Parse(std::string_view text, std::uint32_t most, Number& out) {
  const std::optional<std::uint32_t> value = ParseNumber(text, most);
  if (value) out = static_cast<Number>(*value);
  return value.has_value();
}

constexpr std::uint32_t kMost = std::numeric_limits<std::int32_t>::max();

}  // namespace

std::string_view FaultUsage() {
  return "Faults, each a group of words; RATE is a share from 0 to 1:\n"
         "  seed N                 begin the chance that the others draw on (1)\n"
         "  flip RATE [in|out]     flip a bit of a byte on its way to the mount (in), from it (out), or "
         "both\n"
         "  drop RATE [in|out]     drop a byte\n"
         "  insert RATE [in|out]   insert a byte\n"
         "  double RATE [in|out]   send a byte twice\n"
         "  stray MS MS            a byte comes up by itself each way, as often as between the two, up to "
         "10000\n"
         "  late RATE MS           answer that much later, up to 10000 ms; all behind it waits\n"
         "  old RATE               send the answer before in place of this one\n"
         "  unstored RATE          acknowledge a block without storing it\n"
         "  stuck ADDRESS WORD BIT 0|1  a bit of a word, in package order, that never changes\n"
         "  refuse COMMAND TIMES REASON  refuse a command, by its name in lower case, so often; write is\n"
         "                         all blocks, boot-revision and boot-version have a hyphen; reason 1 to 5\n"
         "  cut BYTE [torn] [N]    cut the power at that byte from now, counted both ways; torn: store what\n"
         "                         it completed in part; after N sendings in vain, or by power, it is back\n"
         "  pull BYTE [N]          pull the cable likewise, until plug\n"
         "  vanish BYTE            unplug the adapter likewise: the terminal goes, and plug brings one of "
         "another\n"
         "                         name, with the link to it\n"
         "  none                   end all but a break that is there\n";
}

bool Faults::Play(std::string_view text) {
  Words words;
  for (;;) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    if (text.empty()) return Play(words);
    words.push_back(text.substr(0, text.find(' ')));
    text.remove_prefix(words.back().size());
  }
}

bool Faults::Play(const Words& words) {
  if (words.empty()) return false;
  std::string told;
  for (const std::string_view word : words) told += " " + std::string(word);
  const bool good = [&] {
    const std::string_view kind = words[0];
    if (words.size() == 1) return kind == "none" && (Clear(), true);
    if (kind == "stray") return PlayStrays(words);
    if (kind == "stuck") return PlayStuck(words);
    if (kind == "refuse") return PlayRefusal(words);
    if (kind == "cut" || kind == "pull" || kind == "vanish") return PlayBreak(words);
    return PlayRate(words) || PlayNoise(words);
  }();
  if (good) mSay("plays" + told);
  return good;
}

bool Faults::PlayRate(const Words& words) {
  std::uint32_t number = 0;
  if (words[0] == "late") {
    if (words.size() != 3 || !Parse(words[2], 10'000, number) || !ParseRate(words[1], mLate)) return false;
    mLateBy = std::chrono::milliseconds(number);
    return true;
  }
  if (words.size() != 2) return false;
  if (words[0] == "old") return ParseRate(words[1], mLies.old);
  if (words[0] == "unstored") return ParseRate(words[1], mLies.unstored);
  if (words[0] != "seed" || !Parse(words[1], kMost, number)) return false;
  mDice.Seed(number);
  return true;
}

bool Faults::PlayNoise(const Words& words) {
  constexpr std::array<std::pair<std::string_view, double Noise::*>, 4> kKinds = {
      {{"flip", &Noise::flip},
       {"drop", &Noise::drop},
       {"insert", &Noise::insert},
       {"double", &Noise::twice}}};
  const std::string_view way = words.size() == 3 ? words[2] : "";
  double rate = 0;
  if (words.size() > 3 || (words.size() == 3 && way != "in" && way != "out") || !ParseRate(words[1], rate))
    return false;
  for (const auto& [name, field] : kKinds) {
    if (name != words[0]) continue;
    if (way != "out") mNoise[kIn].*field = rate;
    if (way != "in") mNoise[kOut].*field = rate;
    return true;
  }
  return false;
}

bool Faults::PlayStrays(const Words& words) {
  std::uint32_t least = 0;
  std::uint32_t most = 0;
  if (words.size() != 3 || !Parse(words[1], 10'000, least) || !Parse(words[2], 10'000, most)) return false;
  if (least == 0 || least > most) return false;
  mLine.strays = {std::chrono::milliseconds(least), std::chrono::milliseconds(most)};
  return true;
}

bool Faults::PlayStuck(const Words& words) {
  Lies::Stuck bit{};
  unsigned number = 0;
  if (words.size() != 5 || !Parse(words[1], 0xFF, bit.address) || !Parse(words[2], 0xFFFF, bit.word) ||
      !Parse(words[3], 15, number) || !Parse(words[4], 1, bit.high))
    return false;
  bit.mask = static_cast<std::uint16_t>(1U << number);
  mLies.stuck.push_back(bit);
  return true;
}

bool Faults::PlayRefusal(const Words& words) {
  Lies::Refusal refusal;
  if (words.size() != 4 || !Parse(words[2], kMost, refusal.times) || !Parse(words[3], 5, refusal.reason) ||
      words[3] == "0")
    return false;
  bool known = false;
  for (const auto& [command, name] : wire::kCommandNames)
    if (FaultName(name) == words[1]) known = (mLies.refusals[command] = refusal, true);
  return known;
}

bool Faults::PlayBreak(const Words& words) {
  const bool cut = words[0] == "cut";
  const bool torn = cut && words.size() > 2 && words[2] == "torn";
  const std::size_t last = torn ? 3 : 2;
  std::uint32_t at = 0;
  std::uint32_t sendings = 0;
  if (words.size() > last + 1 || !Parse(words[1], kMost, at) || at == 0) return false;
  if (words.size() > last && !Parse(words[last], kMost, sendings)) return false;
  mPlanned = words[0] == "vanish" ? Break::Vanish : !cut ? Break::Pull : torn ? Break::Torn : Break::Cut;
  mAt = at;
  mSendings = sendings;
  mCount = 0;
  return true;
}

}  // namespace tarnwick::mount
