#include <algorithm>

#include "Commands.h"
#include "Mount.h"
#include "firmware/QALclass.h"
#include "link/Connection.h"
#include "link/Devices.h"
#include "link/OpeningCause.h"
#include "platform/ui.h"
#include "programmer/ProgrammingRun.h"
#include "programmer/TimeLeft.h"
#include "programmer/Verify.h"
#include "settings/Settings.h"

namespace tarnwick::flash {
namespace {

/// How often a stopped run is begun again where nobody sits who could look at power and cable.
constexpr int kMostAgain = 3;

/// Shows a run as a line of progress.
class Display final : public IProgress {
 public:
  explicit Display(Output& output) : mOutput(output) {}

  void Label(const std::string& text) override { mText = text; }
  void Bar(double fraction) override {
    mLeft.Reached(fraction);
    const std::string left = mLeft.Text();
    mOutput.Progress(left.empty() ? mText : mText + ", " + left, fraction);
  }
  void Turn(std::int32_t, std::int32_t number, std::int32_t count) override { mLeft.Begin(number, count); }
  void Caption(const std::string&) override {}
  void Rest() override { mOutput.EndProgress(); }
  void Busy(bool) override {}
  void Status() override { RefreshDevices(); }

 private:
  Output& mOutput;
  std::string mText;
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
    job.output.Line(OutcomeText(outcome));
    job.output.Event("outcome", [&outcome](JsonLine& json) {
      json.Member("device", gDevices[outcome.Row].Name);
      json.Member("address", gDevices[outcome.Row].Address);
      json.Member("end", std::string(NameOf(outcome.End)));
      json.Member("percent", outcome.Percent);
      json.Member("text", OutcomeText(outcome));
    });
  }
}

/// Nothing of the run reached a device: it was refused, or it ended before a motor left its firmware.
bool IsUntouched(const RowOutcome& outcome) {
  if (outcome.End == RowEnd::Refused || outcome.End == RowEnd::NotReached) return true;
  return outcome.End == RowEnd::NotBegun && gDevices[outcome.Row].State == McState::Running;
}

Exit ExitOf(const std::vector<RowOutcome>& outcomes) {
  const auto written = [](const RowOutcome& outcome) { return outcome.End == RowEnd::Written; };
  if (std::all_of(outcomes.begin(), outcomes.end(), written)) return Exit::Done;
  return std::all_of(outcomes.begin(), outcomes.end(), IsUntouched) ? Exit::Refused : Exit::Stopped;
}

/// A stopped run is best begun again by the program that knows what the devices told before.
bool GoesOn(const Job& job) {
  if (job.user.IsEnding()) return false;
  return ui::MessageBox("Check power and cable. Begin programming again?", ui::Buttons::YesNo,
                        ui::Icon::Question) == ui::Answer::Yes;
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
  const QalIdentity identity = gQAL->Identity();
  if (!job.user.IsAttended()) gBlockOverride = false;  // It asks in the midst of a run.
  RefreshDevices();
  Display display(job.output);
  Exit exit = Exit::Refused;
  bool touched = false;
  for (int again = 0; again <= kMostAgain || job.user.IsAttended(); ++again) {
    job.user.PumpEvents();
    if (job.user.IsEnding()) break;
    ProgrammingRun run(rows, job.arguments.address == 0, identity);
    run.Execute(display);
    TellOutcomes(job, run.Outcomes());
    exit = ExitOf(run.Outcomes());
    if (exit == Exit::Refused && touched) exit = Exit::Stopped;
    touched = true;
    if (exit != Exit::Stopped || !GoesOn(job)) break;
    LockHandControl();
    RefreshDevices();
  }
  return exit;
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
