// One run of a campaign: a simulated mount, the link library's core before it, and the way that the program
// goes, judged by the mount's memory.
#pragma once

#include <array>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "Relay.h"
#include "firmware/QALclass.h"
#include "linklib/LinkCore.h"
#include "linklib/Surroundings.h"
#include "mount/Console.h"
#include "mount/MountProcess.h"
#include "support/TempFolder.h"
#include "support/VirtualLine.h"

namespace tarnwick::campaign {

using std::to_string;
using wire::LinkCore;
using Number = std::uint32_t;

inline constexpr wire::Duration kLongestCall = std::chrono::seconds(5);
inline constexpr std::array<std::size_t, 3> kSizes = {1, 2, 4};
inline constexpr std::int32_t kDevice = 16;

inline bool gTerminal = false;
inline std::map<std::string, std::string> gOptions = {{"--seed", "1"}, {"--runs", "1000000"}};

inline Number OptionNumber(const std::string& name) {
  return static_cast<Number>(std::stoul(gOptions[name]));
}

inline const test::TempFolder gFolder;

/// A simulated mount with the link library's core before it, commanded and judged by the mount's own
/// commands: in this process on virtual time or, with --terminal, over a real pseudo terminal. With --mount
/// PROGRAM another mount is at the terminal, and a relay plays the line's faults.
struct Rig {
  explicit Rig(int revision)
      : faults(mount, line.line, [this](const auto& told) {
          if (gTerminal && told.starts_with("power cut")) process.Ask("power");
          if (told.starts_with("adapter gone")) line.hungUp = true;
        }) {
    mount.Put(kDevice, {.revision = revision});
    if (gTerminal) process.Start(Program(), gFolder / "ports/COM5", {"--revision", to_string(revision)});
  }
  static bool Relayed() { return !gOptions["--mount"].empty(); }
  static std::string Program() { return Relayed() ? gOptions["--mount"] : TARNWICK_MOUNT; }

  /// All lines that the mount answers to a command.
  std::string Ask(const std::string& command) {
    line.hungUp = line.hungUp && command != "plug";
    const bool ofTheLine = command.starts_with("fault") || command.starts_with("line") || command == "plug";
    if (!gTerminal || (Relayed() && (ofTheLine || command == "power"))) {
      const std::string answer = console.Execute(command);
      if (!gTerminal || ofTheLine) return answer;
    }
    return process.Ask(command);
  }
  /// The library as a new process has it: what it knew is gone, and nobody has closed the port in order.
  void Restart() {
    if (gTerminal && !Relayed()) {
      library.emplace(terminal, steady);
    } else {
      library.emplace(line, line);
    }
  }
  LinkCore& Core() {
    if (!library) Restart();
    return *library;
  }
  wire::Duration Now() { return gTerminal ? steady.Now() : line.Now(); }

  mount::Mount mount;
  const std::unique_ptr<test::VirtualLine> own =
      Relayed() ? std::make_unique<Relay>(mount, gFolder.Path()) : std::make_unique<test::VirtualLine>(mount);
  test::VirtualLine& line = *own;
  mount::Faults faults;
  mount::Console console{mount, line.line, faults};
  mount::MountProcess process;

 private:
  wire::PortOpener terminal{gFolder.Path()};
  wire::SteadyClock steady;
  std::optional<LinkCore> library;
};

struct Sample {
  Sample() {
    QALclass package;
    package.LoadQALfile(TARNWICK_SAMPLE);
    Rig scratch(2);
    for (std::int32_t w = 0; w <= package.DeviceWords(1); ++w) {
      words.push_back(*package.DeviceHiByte(1, w) * 256 + *package.DeviceLoByte(1, w));
      scratch.Ask("poke 16 " + to_string(w) + " " + to_string(words.back()));
    }
    dump = scratch.Ask("dump 16 " + to_string(words.size()));
  }
  std::vector<std::int32_t> words;
  std::string dump;  ///< As the mount tells its memory when it holds the words.
};

inline const Sample gSample;

struct Run {
  Run(Number n, Number seed) : number(n) {
    dice.Seed(seed * 1'000'003U + n);
    Play("fault seed " + to_string(dice.Below(1U << 30)));
    if (dice.Below(2) == 1) Play("hand-control real");
  }
  void Play(const std::string& command) {
    if (rig.Ask(command) != "ok\n") wrong = "cannot play " + command;
  }
  template <class... Parameters, class... Arguments>
  std::int32_t Call(std::int32_t (LinkCore::*function)(Parameters...), Arguments... arguments) {
    const wire::Duration begin = rig.Now();
    const std::int32_t result = (rig.Core().*function)(arguments...);
    const wire::Duration taken = rig.Now() - begin;
    longest = std::max(longest, taken);
    wire::Duration bound = kLongestCall;
    if constexpr (std::is_same_v<decltype(function), decltype(&LinkCore::EndProgramming)>)
      bound = function == &LinkCore::EnterBoot ? bound : std::max(bound, slowest);
    if (taken > bound) wrong = "a call that takes too long";
    return result;
  }
  std::size_t Blocks() const { return gSample.words.size() / size; }
  std::int32_t State() { return Call(&LinkCore::GetState, kDevice, &version, &version); }
  bool Open() { return Call(&LinkCore::InitSerial, "COM5") == 0; }

  /// The whole way as the program goes it, without its boxes; `before` is asked before each block. False
  /// when a call failed. A success that the memory does not bear out is wrong.
  bool Program(const std::function<void(std::size_t)>& before = {}) {
    rig.Core().LockHandControl();
    const std::int32_t state = State();
    std::int32_t told = 0;
    if (state == 0 || (state == 1 && Call(&LinkCore::GetRevision, kDevice, &told) == 0)) return false;
    if (told >= 4 && Call(&LinkCore::EnterBoot, kDevice) == 0) return false;
    if (Call(&LinkCore::GetBootRevision, kDevice, &told) == 0) return false;
    if (State() == 2 && Call(&LinkCore::StartProgramming, kDevice) == 0) return false;
    if (State() != 3) return false;
    for (std::size_t block = 0; block < Blocks(); ++block) {
      const auto w = static_cast<std::int32_t>(block * size);
      std::vector<std::int32_t> packet = {w / 256, w % 256};
      for (std::size_t i = block * size; i < (block + 1) * size; ++i)
        packet.insert(packet.end(), {gSample.words[i] & 0xFF, gSample.words[i] >> 8});
      if (before) before(block);
      const auto count = static_cast<std::int32_t>(packet.size());
      if (Call(&LinkCore::SendData, kDevice, count, packet.data()) == 0) return false;
    }
    if (Call(&LinkCore::EndProgramming, kDevice) == 0) return false;
    if (rig.Ask("dump 16 " + to_string(gSample.words.size())) != gSample.dump) wrong = "a wrong word";
    if (rig.Ask("state").find("complete=yes") == std::string::npos) wrong = "an incomplete image";
    return true;
  }

  /// Puts the image into the device, without a program.
  void Place() {
    for (std::size_t w = 0; w < gSample.words.size(); ++w)
      Play("poke 16 " + to_string(w) + " " + to_string(gSample.words[w]));
  }

  /// A word that is told is the one that stands there. One that cannot be read is asked for again.
  bool Read() {
    constexpr Number kTries = 50;
    Number tries = 0;
    for (std::size_t i = 0; i < gSample.words.size(); ++i) {
      // A small memory keeps the image's first words at its end.
      const auto place = static_cast<std::int32_t>(i + (i < 4 && revision < 4 ? 0xFFFC : 0));
      std::int32_t word = -1;
      while (Call(&LinkCore::ReadMemory, kDevice, place, place, &word) != 1)
        if (++tries > kTries) return false;
      if (word != gSample.words[i]) wrong = "a wrong word read";
    }
    return true;
  }

  const Number number;
  const std::int32_t revision = (number + number / 6) % 2 == 0 ? 2 : 5;
  Rig rig{revision};
  mount::Dice dice;
  std::size_t size = kSizes[number % kSizes.size()];  ///< Words in a block.
  wire::Duration longest{};                           ///< The longest call of the library.
  wire::Duration slowest{};                           ///< What Start and End may take beside, as told.
  std::int32_t version = 0;
  std::string wrong;  ///< What must never be, told.
};

}  // namespace tarnwick::campaign
