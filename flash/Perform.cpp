#include "app/ProgramSettings.h"
#include "firmware/QALclass.h"
#include "flash/Commands.h"
#include "link/Connection.h"
#include "platform/contain.h"
#include "programmer/Advice.h"
#include "programmer/DeviceClass.h"
#include "programmer/UnfinishedRun.h"

namespace tarnwick::flash {
namespace {

constexpr std::int32_t kMotorControllers = 0;

Exit Dispatch(const Job& job) {
  switch (job.arguments.command) {
    case Command::Ports:
      return ListPorts(job);
    case Command::Status:
      return ShowStatus(job);
    case Command::Check:
      return CheckPackage(job);
    case Command::Program:
      return ProgramPackage(job);
    case Command::Verify:
      return VerifyPackage(job);
    case Command::Fetch:
      return FetchPackages(job);
    case Command::List:
      return ListPackages(job);
    case Command::Forget:
      return ForgetNote(job);
  }
  return Exit::WrongUse;
}

}  // namespace

Exit Perform(const Job& job) {
  LoadSettings();
  ChooseDeviceClass(kMotorControllers);
  if (const std::string told = RecallUnfinished(advice::kCommandAgain); !told.empty())
    job.output.Message(told, {});
  Exit exit = Exit::Refused;
  if (!Contain([&] { exit = Dispatch(job); }))
    job.output.Note("That failed in a way that nobody foresaw. Tarnwick.log has more.");
  if (IsConnected()) CloseConnection();
  gQAL.reset();
  return exit;
}

}  // namespace tarnwick::flash
