#include <algorithm>

#include "flash/Commands.h"
#include "programmer/UnfinishedRun.h"

namespace tarnwick::flash {

Exit ForgetNote(const Job& job) {
  const auto isChosen = [&job](const UnfinishedMotor& motor) {
    return job.arguments.address == 0 || job.arguments.address == motor.Address;
  };
  const std::vector<UnfinishedMotor> before = ReadUnfinished();
  ForgetUnfinished(job.arguments.address);
  bool kept = false;
  for (const UnfinishedMotor& motor : ReadUnfinished()) kept = kept || isChosen(motor);
  if (kept) {
    job.output.Note("The note could not be changed.");
    return Exit::Refused;
  }
  for (const UnfinishedMotor& motor : before) {
    if (isChosen(motor)) job.output.Line(motor.Name + ": forgotten.");
  }
  if (std::none_of(before.begin(), before.end(), isChosen)) job.output.Line("There is no such note.");
  job.output.Member("forgotten", [&](JsonLine& json) {
    json.Open('[');
    for (const UnfinishedMotor& motor : before) {
      if (isChosen(motor)) json.Value(motor.Name);
    }
    json.Close(']');
  });
  return Exit::Done;
}

}  // namespace tarnwick::flash
