#include <algorithm>
#include <chrono>

#include "Mount.h"
#include "firmware/QALclass.h"
#include "flash/Commands.h"
#include "link/Connection.h"
#include "link/Devices.h"
#include "link/OpeningCause.h"
#include "platform/clock.h"
#include "platform/ui.h"
#include "programmer/ProgrammingRun.h"
#include "programmer/TimeLeft.h"
#include "programmer/Verify.h"
#include "settings/Settings.h"

namespace tarnwick::flash {
namespace {

/// Before a run is begun again where nobody sits who could look at power and cable.
constexpr int kPauseSeconds = 10;

/// Shows a run as a line of progress.
class Display final : public IProgress {
 public:
  explicit Display(Output& output) : mOutput(output) {}

  void Label(const std::string& text) override { mText = text; }
  void Bar(double fraction) override {
    mLeft.Reached(mShare = fraction);
    const std::string left = mLeft.Text();
    mOutput.Progress(left.empty() ? mText : mText + ", " + left, fraction);
  }
  void Turn(std::int32_t, std::int32_t number, std::int32_t count) override { mLeft.Begin(number, count); }
  void Waiting(const std::string& what) override {
    if (!what.empty()) mOutput.Progress(mText + ", " + what, mShare, true);
  }
  void Caption(const std::string&) override {}
  void Rest() override { mOutput.EndProgress(); }
  void Busy(bool) override {}
  void Status() override { RefreshDevices(); }

 private:
  Output& mOutput;
  std::string mText;
  double mShare = 0;
  TimeLeft mLeft;
};

void WriteDevice(JsonLine& json, const DeviceEntry& device) {
  json.Open('{');
  json.Member("name", device.Name);
  json.Member("address", device.Address);
  json.Member("state", device.StateName);
  json.Member("model", device.Model);
  json.Member("model_name", device.ModelName);
  json.Member("version", device.Version);
  json.Member("hwrev", device.HwRev);
  json.Member("boot_version", device.BootVersion);
  json.Close('}');
}

/// The devices as they were last read.
void TellDevices(const Job& job) {
  job.output.Line(BuildStatusReport());
  job.output.Member("port", [](JsonLine& json) { json.Shown(gComPort); });
  job.output.Member("devices", [](JsonLine& json) {
    json.Open('[');
    for (const DeviceEntry& device : gDevices) WriteDevice(json, device);
    json.Close(']');
  });
}

const char* NameOf(RowEnd end) {
  switch (end) {
    case RowEnd::NotReached:
      return "not reached";
    case RowEnd::Refused:
      return "refused";
    case RowEnd::NotBegun:
      return "not begun";
    case RowEnd::Stopped:
      return "stopped";
    case RowEnd::Written:
      return "written";
  }
  return "";
}

void TellOutcomes(const Job& job, const std::vector<RowOutcome>& outcomes) {
  for (const RowOutcome& outcome : outcomes) {
    const std::string text = OutcomeText(outcome, Reader::Command);
    job.output.Line(text);
    job.output.Event("outcome", [&](JsonLine& json) {
      json.Member("device", gDevices[outcome.Row].Name);
      json.Member("address", gDevices[outcome.Row].Address);
      json.Member("end", std::string(NameOf(outcome.End)));
      json.Member("percent", outcome.Percent);
      json.Member("boot_loader_untold", outcome.LoaderUntold);
      json.Member("text", text);
    });
  }
}

/// Nothing of the run reached a device: it was refused, or it ended before a motor left its firmware.
bool IsUntouched(const RowOutcome& outcome) {
  if (outcome.End == RowEnd::Refused || outcome.End == RowEnd::NotReached) return true;
  return outcome.End == RowEnd::NotBegun && gDevices[outcome.Row].State == McState::Running;
}

Exit ExitOf(const std::vector<RowOutcome>& outcomes) {
  // Of a boot loader that could not be asked only another run can tell.
  const auto written = [](const RowOutcome& outcome) {
    return outcome.End == RowEnd::Written && !outcome.LoaderUntold;
  };
  if (std::all_of(outcomes.begin(), outcomes.end(), written)) return Exit::Done;
  return std::all_of(outcomes.begin(), outcomes.end(), IsUntouched) ? Exit::Refused : Exit::Stopped;
}

/// Only this process still knows the hardware revision of a motor that cannot tell it any more: so a stopped
/// run is offered to be begun again before it ends.
bool GoesOn(const Job& job) {
  if (job.user.IsEnding()) return false;
  const bool again = ui::MessageBox(
                         "Check power and cable. Begin programming again? A motor that was stopped may no "
                         "longer tell its hardware revision to a later command.",
                         ui::Buttons::YesNo, ui::Icon::Question) == ui::Answer::Yes;
  // Where nobody says when power is back, it is given a while.
  for (int second = 0; again && !job.user.IsAttended() && second < kPauseSeconds; ++second) {
    clock::Sleep(std::chrono::seconds(1));
    job.user.PumpEvents();
    if (job.user.IsEnding()) return false;
  }
  return again;
}

/// The rows that another run has to write.
std::vector<std::int32_t> Unwritten(const std::vector<RowOutcome>& outcomes) {
  std::vector<std::int32_t> rows;
  for (const RowOutcome& outcome : outcomes) {
    if (outcome.End != RowEnd::Written) rows.push_back(outcome.Row);
  }
  return rows;
}

/// Runs until all of `rows` are written, or nobody wants to go on.
Exit RunRows(const Job& job, const ChosenPackage& package, std::vector<std::int32_t> rows) {
  const QalIdentity identity = gQAL->Identity();
  Display display(job.output);
  const bool together = job.arguments.address == 0;
  for (bool touched = false;; touched = true) {
    ProgrammingRun run(rows, together && !touched, identity);
    run.Execute(display);
    TellOutcomes(job, run.Outcomes());
    const Exit exit = ExitOf(run.Outcomes());
    if (exit == Exit::Done || (exit == Exit::Refused && !touched)) return exit;
    rows = Unwritten(run.Outcomes());
    if (rows.empty() || !GoesOn(job)) return Exit::Stopped;
    package.Reload();
    LockHandControl();
    RefreshDevices();
  }
}

}  // namespace

Exit ListPorts(const Job& job) {
  const std::vector<Port> ports = PortsHere();
  for (const Port& port : ports) job.output.Line(port.name + "  " + PortText(port.name));
  if (ports.empty()) job.output.Line("There is no serial port.");
  job.output.Member("ports", [&ports](JsonLine& json) {
    json.Open('[');
    for (const Port& port : ports) {
      json.Open('{');
      json.Member("name", port.name);
      json.Key("device");
      json.Shown(PortText(port.name));
      json.Member("usb", port.usb);
      json.Close('}');
    }
    json.Close(']');
  });
  return Exit::Done;
}

Exit ShowStatus(const Job& job) {
  const Exit reached = ReachMount(job);
  if (reached == Exit::Done || IsConnected()) TellDevices(job);
  return reached;
}

Exit CheckPackage(const Job& job) {
  if (const Exit reached = ReachMount(job); reached != Exit::Done) return reached;
  ChosenPackage package(job);
  const Exit judged = package.Judge();
  TellDevices(job);
  job.output.Member("fits", [judged](JsonLine& json) { json.Value(judged == Exit::Done); });
  if (judged == Exit::Done) job.output.Line("The package fits.");
  return judged;
}

Exit ProgramPackage(const Job& job) {
  if (const Exit reached = ReachMount(job); reached != Exit::Done) return reached;
  ChosenPackage package(job);
  if (const Exit judged = package.Judge(); judged != Exit::Done) return judged;
  const std::vector<std::int32_t> rows = package.Rows();
  if (rows.empty()) return Exit::Refused;
  if (!job.user.IsAttended()) gBlockOverride = false;  // It asks in the midst of a run.
  RefreshDevices();
  job.user.PumpEvents();
  return job.user.IsEnding() ? Exit::Refused : RunRows(job, package, rows);
}

Exit VerifyPackage(const Job& job) {
  if (const Exit reached = ReachMount(job); reached != Exit::Done) return reached;
  ChosenPackage package(job);
  if (const Exit judged = package.Judge(); judged != Exit::Done) return judged;
  const std::vector<std::int32_t> rows = package.Rows();
  if (rows.empty()) return Exit::Refused;
  RefreshDevices();
  if (const std::string refusal = VerifyRefusal(rows); !refusal.empty()) {
    ui::MessageBox(refusal);
    return Exit::Refused;
  }
  Display display(job.output);
  switch (VerifyAll(rows, display)) {
    case VerifyEnd::Identical:
      return Exit::Done;
    case VerifyEnd::Different:
      return Exit::Differs;
    case VerifyEnd::Unread:
      return Exit::LineFailed;
    case VerifyEnd::Cancelled:
      return Exit::Refused;
  }
  return Exit::Refused;
}

}  // namespace tarnwick::flash
