#include "programmer/UnfinishedRun.h"

#include <algorithm>
#include <system_error>

#include "firmware/QALclass.h"
#include "link/Devices.h"
#include "platform/clock.h"
#include "platform/contain.h"
#include "platform/files.h"
#include "platform/program.h"
#include "platform/text.h"
#include "platform/ui.h"
#include "programmer/Advice.h"
#include "settings/INIfile.h"

namespace tarnwick {
namespace {

/// So many percent further, the note is written again, once that much time has passed.
constexpr std::int32_t kStep = 5;
constexpr std::chrono::seconds kPause(1);

constexpr const char* kName = "NAME";
constexpr const char* kModel = "MODEL";
constexpr const char* kModelName = "MODELNAME";
constexpr const char* kHwRev = "HWREV";
constexpr const char* kPackage = "PACKAGE";
constexpr const char* kBootLoader = "BOOTLOADER";
constexpr const char* kPercent = "PERCENT";

void Take(UnfinishedMotor& motor, const INIline& line) {
  const std::int32_t number = text::ToInt32(text::NumericPrefix(line.Value));
  if (line.Section == kName) motor.Name = line.Value;
  if (line.Section == kModel) motor.Seen.Model = number;
  if (line.Section == kModelName) motor.Seen.ModelName = line.Value;
  if (line.Section == kHwRev) motor.Seen.HwRev = number;
  if (line.Section == kPackage) motor.Package = line.Value;
  if (line.Section == kBootLoader) motor.BootPackage = number != 0;
  if (line.Section == kPercent) motor.Percent = number;
}

void Put(INIlines& lines, const UnfinishedMotor& motor) {
  const std::string group = "[" + std::to_string(motor.Address) + "]";
  lines.Add(group);
  const auto add = [&](const char* key, const std::string& value) { lines.Add(group, key, value); };
  add(kName, motor.Name);
  add(kModel, std::to_string(motor.Seen.Model));
  add(kModelName, motor.Seen.ModelName);
  add(kHwRev, std::to_string(motor.Seen.HwRev));
  add(kPackage, motor.Package);
  add(kBootLoader, motor.BootPackage ? "1" : "0");
  add(kPercent, std::to_string(motor.Percent));
}

void Write(const std::vector<UnfinishedMotor>& motors) {
  if (motors.empty()) {
    if (files::FileExists(UnfinishedPath())) files::Remove(UnfinishedPath());
    return;
  }
  INIfile file;
  for (const UnfinishedMotor& motor : motors) Put(*file.INIlines(), motor);
  file.SaveFile(UnfinishedPath());
}

/// The note without that motor; 0 for all.
std::vector<UnfinishedMotor> Others(std::int32_t address) {
  std::vector<UnfinishedMotor> motors = ReadUnfinished();
  std::erase_if(motors,
                [address](const UnfinishedMotor& motor) { return address == 0 || motor.Address == address; });
  return motors;
}

std::string Describe(const UnfinishedMotor& motor) {
  const std::string seen = SeenText(motor.Seen);
  return motor.Name + (seen.empty() ? "" : " (last seen: " + seen + ")") + ": stopped at " +
         std::to_string(motor.Percent) + " %" + (motor.BootPackage ? " of the boot loader for " : " of ") +
         motor.Package + "\r\n";
}

}  // namespace

UnfinishedNote::UnfinishedNote(std::int32_t row) {
  const DeviceEntry& device = gDevices[row];
  mMotor.Address = device.Address;
  mMotor.Name = device.Name;
  mMotor.Seen = LastSeen(device.Address);
  mMotor.Package = gQAL->RealFilename().filename().string();
}

void UnfinishedNote::Keep(const RowOutcome& outcome) {
  const bool begins = !mNoted || outcome.BootPackage != mMotor.BootPackage;
  if (!begins && outcome.Percent / kStep == mMotor.Percent / kStep) return;
  const std::chrono::milliseconds now = clock::SteadyNow();
  if (!begins && now - mWritten < kPause) return;
  mNoted = true;
  mWritten = now;
  mMotor.BootPackage = outcome.BootPackage;
  mMotor.Percent = outcome.Percent;
  Contain([this] {
    std::vector<UnfinishedMotor> motors = Others(mMotor.Address);
    motors.push_back(mMotor);
    Write(motors);
  });
}

std::filesystem::path UnfinishedPath() {
  return program::This().folder / (program::This().name + ".unfinished");
}

std::vector<UnfinishedMotor> ReadUnfinished() {
  INIfile file;
  file.LoadFile(UnfinishedPath());
  std::vector<UnfinishedMotor> motors;
  for (const auto& line : file.INIlines()->NewEnum()) {
    if (line->Section == line->Group) {
      const std::int32_t address =
          text::ToInt32(text::NumericPrefix(std::string_view(line->Group).substr(1)));
      motors.emplace_back().Address = address;
    } else if (!motors.empty()) {
      Take(motors.back(), *line);
    }
  }
  std::erase_if(motors, [](const UnfinishedMotor& motor) { return motor.Address < 1 || motor.Name.empty(); });
  return motors;
}

void ForgetUnfinished(std::int32_t address) {
  if (!files::FileExists(UnfinishedPath())) return;
  Contain([address] { Write(Others(address)); });
}

std::string RecallUnfinished(std::string_view way) {
  const std::vector<UnfinishedMotor> motors = ReadUnfinished();
  if (motors.empty()) return {};
  std::string told = "The programming of a motor was begun and not ended:\r\n\r\n";
  for (const UnfinishedMotor& motor : motors) {
    RecallSeen(motor.Address, motor.Seen);
    told += Describe(motor);
  }
  return told.append("\r\n").append(way);
}

void ShowUnfinished() {
  const std::string told = RecallUnfinished(advice::kResume);
  if (told.empty()) return;
  const ui::Answer answer = ui::MessageBox(told + "\r\n\r\nKeep this note until it is programmed?",
                                           ui::Buttons::YesNo, ui::Icon::Exclamation);
  if (answer == ui::Answer::No) ForgetUnfinished(0);
}

}  // namespace tarnwick
