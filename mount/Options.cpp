#include "mount/Options.h"

#include <array>
#include <charconv>
#include <utility>

#include "mount/Faults.h"

namespace tarnwick::mount {
namespace {

constexpr std::uint32_t kMostByte = 0xFF;
constexpr std::array<std::uint8_t, 2> kMotorControllers = {16, 17};
constexpr std::array<std::uint8_t, 2> kAccessories = {18, 19};

constexpr std::array<std::pair<std::string_view, RunState>, 4> kStates = {{{"running", RunState::Running},
                                                                           {"boot", RunState::Boot},
                                                                           {"program", RunState::Program},
                                                                           {"silent", RunState::Silent}}};

/// The keys of a line that are times.
constexpr std::array<std::pair<std::string_view, Endpoint::Time LineSetup::*>, 3> kLineTimes = {
    {{"latency", &LineSetup::latency},
     {"hold", &LineSetup::hold},
     {"hand-control", &LineSetup::handControl}}};

bool Assign(std::string_view text, std::uint32_t most, int& out) {
  const std::optional<std::uint32_t> value = ParseNumber(text, most);
  if (value) out = static_cast<int>(*value);
  return value.has_value();
}

/// One `key=value` of a device.
bool Apply(std::string_view key, std::string_view value, DeviceSetup& setup) {
  if (key == "model") return Assign(value, 0xFFFF, setup.model);
  if (key == "revision") return Assign(value, kMostByte, setup.revision);
  if (key == "boot") return Assign(value, kMostByte, setup.bootVersion);
  if (key == "claims") return Assign(value, kMostByte, setup.claims);
  if (key == "version") {
    const std::size_t point = value.find('.');
    return point != std::string_view::npos && Assign(value.substr(0, point), kMostByte, setup.major) &&
           Assign(value.substr(point + 1), kMostByte, setup.minor);
  }
  const std::optional<RunState> state = ParseState(value);
  if (key != "state" || !state) return false;
  setup.state = *state;
  return true;
}

/// Gives each pair of "key=value,key=value,..." to `apply`, until that or the text fails.
template <class Apply>
bool EachPair(std::string_view text, Apply&& apply) {
  while (!text.empty()) {
    const std::size_t comma = text.find(',');
    const std::string_view pair = text.substr(0, comma);
    const std::size_t equals = pair.find('=');
    if (equals == std::string_view::npos || !apply(pair.substr(0, equals), pair.substr(equals + 1)))
      return false;
    text = comma == std::string_view::npos ? std::string_view() : text.substr(comma + 1);
  }
  return true;
}

/// "ADDRESS:key=value,key=value,..."
bool ApplyDevice(std::string_view text, std::map<std::uint8_t, DeviceSetup>& devices) {
  const std::size_t colon = text.find(':');
  const std::optional<std::uint32_t> address = ParseNumber(text.substr(0, colon), kMostByte);
  if (colon == std::string_view::npos || !address || *address == wire::kMountAddress) return false;
  DeviceSetup& setup = devices[static_cast<std::uint8_t>(*address)];
  return EachPair(text.substr(colon + 1),
                  [&](std::string_view key, std::string_view value) { return Apply(key, value, setup); });
}

/// Notes a fault that can be played.
bool ApplyFault(std::string_view text, Options& options) {
  Mount mount;
  Endpoint endpoint(mount);
  Line line(endpoint);
  options.faults.emplace_back(text);
  return Faults(mount, line).Play(text);
}

bool ApplyToMotorControllers(std::string_view key, std::string_view value, Options& options) {
  for (const std::uint8_t address : kMotorControllers)
    if (!Apply(key, value, options.devices[address])) return false;
  return true;
}

/// An option with a value.
bool ApplyOption(std::string_view name, std::string_view value, Options& options) {
  if (name == "--link") options.link = value;
  if (name == "--link") return !value.empty();
  if (name == "--device") return ApplyDevice(value, options.devices);
  if (name == "--baud") return ParseSpeed(value, options.path.fastest);
  if (name == "--line") return ParseLine(value, options.line);
  if (name == "--busy") return ParseBusy(value, options.path.busy);
  if (name == "--fault") return ApplyFault(value, options);
  if (name == "--hand-control") return ParseHandControl(value, options.path);
  for (const std::string_view key : {"model", "revision", "state", "version", "claims"})
    if (name.substr(0, 2) == "--" && name.substr(2) == key)
      return ApplyToMotorControllers(key, value, options);
  return false;
}

Options Defaults() {
  Options options;
  for (const std::uint8_t address : kMotorControllers) options.devices[address] = {};
  DeviceSetup accessory;
  accessory.model = 1;
  accessory.revision = 4;
  for (const std::uint8_t address : kAccessories) options.devices[address] = accessory;
  return options;
}

}  // namespace

std::string_view Usage() {
  return "Usage: tarnwick-mount [option]...\n\n"
         "A simulated mount on a pseudo terminal: motor controllers 16 and 17, accessories 18 and 19.\n\n"
         "  --link PATH            make a symbolic link to the terminal, removed at the end\n"
         "  --model N              model of the motor controllers (5)\n"
         "  --revision N           hardware revision of the motor controllers (2)\n"
         "  --version M.N          firmware that they come with (4.2)\n"
         "  --state STATE          running, boot, program or silent (running)\n"
         "  --old-boot             they have a boot loader of version 1\n"
         "  --claims N             revision that an old boot loader tells (the true one)\n"
         "  --device A:KEY=VALUE,...  set one device; keys: model, revision, version, state, boot, claims\n"
         "  --hand-control KIND    link through a hand control: real, old or virtual; or direct\n"
         "  --baud SPEED           fastest speed: 9600, 19200, 57600, 115200, 230400, 460800, 921600 "
         "(115200)\n"
         "  --first                a mount of the protocol's first version: no short frames, no times\n"
         "  --busy KEY=MS,...      how long start, end and check take, up to 10000 ms each (0); with "
         "deaf=on\n"
         "                         the mount hears nothing meanwhile, else it refuses what comes in\n"
         "  --line KEY=VALUE,...   how the line is played; keys:\n"
         "                           paced=on|off      bytes take the time of their bits (off)\n"
         "                           latency=MS        answers are held back, up to 1000 ms (0)\n"
         "                           piece=N           most bytes that arrive together; 0 for all (0)\n"
         "                           poor-above=SPEED  faster than this, one byte in 23 is damaged\n"
         "                           hold=MS           an adapter hands on what came in at such times alone "
         "(0)\n"
         "                           hand-control=MS   time to pass a device's answer on, up to 1000 ms (0)\n"
         "                           rounds-to=SPEED   what a driver takes for each faster speed\n"
         "  --fault FAULT          play a fault, such as \"flip 0.001\"; they are listed below\n"
         "  --until-eof            end when standard input ends\n"
         "Options apply in their order. Commands on standard input:\n"
         "  power                  switch the mount off and on, or on after a cut\n"
         "  plug                   plug the cable in after it was pulled\n"
         "  fault FAULT            play a fault from now on; what is played is told on standard error\n"
         "  hand-control KIND      play another link: direct, real, old or virtual\n"
         "  busy KEY=MS,...        let it take that long; keys as above\n"
         "  baud SPEED             let that be the fastest speed from the next opening on\n"
         "  first on|off           be a mount of the first version, or not\n"
         "  line                   tell how the line is played, ended by \"end\"\n"
         "  line KEY=VALUE,...     play it otherwise; keys as above\n"
         "  state                  tell each device's state, ended by \"end\"\n"
         "  state ADDRESS STATE    put a device into a state\n"
         "  dump ADDRESS [COUNT]   the device's words in package order, in hexadecimal, ended by \"end\"\n"
         "  poke ADDRESS WORD VALUE  change a word, numbered in package order\n"
         "  quit                   end\n";
}

std::optional<Options> ParseOptions(const std::vector<std::string>& arguments, std::string& error) {
  Options options = Defaults();
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& name = arguments[i];
    if (name == "--until-eof") {
      options.untilEof = true;
    } else if (name == "--first") {
      options.path.first = true;
    } else if (name == "--old-boot") {
      ApplyToMotorControllers("boot", "1", options);
    } else if (i + 1 == arguments.size() || !ApplyOption(name, arguments[i + 1], options)) {
      error = "cannot understand " + name + (i + 1 < arguments.size() ? " " + arguments[i + 1] : "");
      return std::nullopt;
    } else {
      ++i;
    }
  }
  return options;
}

bool ParseSpeed(std::string_view text, int& speed) {
  int value = 0;
  if (!Assign(text, wire::kSpeeds.back(), value) || wire::SpeedCode(value) == wire::kSpeeds.size())
    return false;
  speed = value;
  return true;
}

bool ParseLine(std::string_view text, LineSetup& line) {
  constexpr std::uint32_t kMostTime = 1000;
  constexpr std::uint32_t kMostPiece = 256;
  return !text.empty() && EachPair(text, [&line](std::string_view key, std::string_view value) {
    int number = 0;
    if (key == "poor-above") return ParseSpeed(value, line.poorAbove);
    if (key == "rounds-to") return ParseSpeed(value, line.roundsTo);
    if (key == "paced") line.paced = value == "on";
    if (key == "paced") return value == "on" || value == "off";
    if (key == "piece" && Assign(value, kMostPiece, number))
      return line.piece = static_cast<std::size_t>(number), true;
    for (const auto& [name, time] : kLineTimes)
      if (name == key && Assign(value, kMostTime, number))
        return line.*time = std::chrono::milliseconds(number), true;
    return false;
  });
}

std::string DescribeLine(const LineSetup& line) {
  std::string text =
      std::string("paced=") + (line.paced ? "on" : "off") + " piece=" + std::to_string(line.piece) +
      " poor-above=" + std::to_string(line.poorAbove) + " rounds-to=" + std::to_string(line.roundsTo);
  for (const auto& [name, time] : kLineTimes)
    text += " " + std::string(name) + "=" +
            std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(line.*time).count());
  return text;
}

bool ParseBusy(std::string_view text, Busy& busy) {
  constexpr std::uint32_t kMost = 10'000;
  return !text.empty() && EachPair(text, [&busy](std::string_view key, std::string_view value) {
    int number = 0;
    if (key == "deaf") busy.deaf = value == "on";
    if (key == "deaf") return value == "on" || value == "off";
    for (const auto& [name, time] :
         {std::pair{"start", &Busy::start}, {"end", &Busy::end}, {"check", &Busy::check}})
      if (name == key && Assign(value, kMost, number))
        return busy.*time = std::chrono::milliseconds(number), true;
    return false;
  });
}

bool ParseHandControl(std::string_view text, LinkSetup& link) {
  link.kind = text == "virtual"  ? wire::LinkKind::VirtualPort
              : text == "direct" ? wire::LinkKind::Direct
                                 : wire::LinkKind::HandControl;
  link.upgradeSupported = text != "old";
  return text == "direct" || text == "real" || text == "old" || text == "virtual";
}

std::optional<RunState> ParseState(std::string_view text) {
  for (const auto& [name, state] : kStates)
    if (name == text) return state;
  return std::nullopt;
}

std::string_view NameOf(RunState state) {
  for (const auto& [name, known] : kStates)
    if (known == state) return name;
  return {};
}

std::optional<std::uint32_t> ParseNumber(std::string_view text, std::uint32_t most) {
  const bool hexadecimal = text.starts_with("0x");
  if (hexadecimal) text.remove_prefix(2);
  std::uint32_t value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value, hexadecimal ? 16 : 10);
  if (error != std::errc() || stop != end || value > most) return std::nullopt;
  return value;
}

}  // namespace tarnwick::mount
