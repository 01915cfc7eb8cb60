#include "webupdate/Start.h"

#include <chrono>
#include <optional>
#include <random>
#include <thread>

#include "platform/FileLock.h"
#include "platform/files.h"
#include "platform/process.h"
#include "platform/program.h"
#include "webupdate/EarlierSwap.h"

namespace tarnwick {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using What = Beginning::What;
using State = Journal::State;

constexpr std::string_view kLockName = "WebUpdate.lock";
constexpr auto kPatience = 30s;       ///< With another instance that changes the files.
constexpr auto kStagedPatience = 2s;  ///< With others that run: their user may close them any time later.
constexpr auto kTrialPatience = 20s;
constexpr auto kRound = 20ms;

FileLock& Lock() {
  static FileLock lock;
  return lock;
}

const std::filesystem::path& Folder() {
  return program::This().folder;
}

bool IsBusy(std::error_code error) {
  return error == std::errc::resource_unavailable_try_again;
}

/// Instances that got into each other's way come back at different times.
void Rest() {
  std::random_device random;
  std::this_thread::sleep_for(kRound + std::chrono::milliseconds(random() % 20));
}

/// Takes an update back that the running program has just put in place, and is the program again.
Beginning GoBack() {
  const Clock::time_point end = Clock::now() + kStagedPatience;
  while (Lock().Claim()) {
    if (Clock::now() > end) return {What::End, 1};  // Others have the folder: the next start sees to it.
    Rest();
  }
  const Settlement settled = TakeBack(Folder());
  if (settled.what == Settlement::What::Failed) return {What::Failed, 1, settled.cause};
  Lock().Share();
  process::Become(program::Executable());
  return {What::Failed, 1, std::make_error_code(std::errc::io_error)};
}

/// Starts the new program and stays until it has shown its first page. One that cannot be started, or ends
/// before that twice, is taken back.
Beginning Guard() {
  for (;;) {
    auto journal = ReadJournal(Folder());
    if (!journal) return {What::End};
    const int before = Attempts(Folder(), *journal);
    process::Beside program;
    if (program.Start({program::Executable().string()})) return GoBack();
    while (program.Runs()) {
      if (!ReadJournal(Folder())) return {What::End};
      std::this_thread::sleep_for(kRound);
    }
    if (!(journal = ReadJournal(Folder()))) return {What::End};
    const int attempts = Attempts(Folder(), *journal);
    if (attempts >= kMostAttempts) return GoBack();
    if (attempts == before) return {What::End, program.Status()};  // Without a display nothing is proved.
  }
}

/// True when the update of `journal` leaves this program nothing to do at its start.
bool IsSettled(const Journal& journal) {
  if (journal.state != State::Moved || Attempts(Folder(), journal) >= kMostAttempts) return false;
  if (program::HasDisplay()) NoteAttempt(Folder(), journal);
  return true;
}

/// Settles the update, with the folder's lock held alone.
std::optional<Beginning> Settle(const CanRun& canRun) {
  if (HasEarlierSwap(Folder())) {
    const std::error_code error = CompleteEarlierSwap(Folder());
    Lock().Share();
    return error ? std::optional(Beginning{What::Failed, 1, error}) : std::nullopt;
  }
  const Settlement settled = SettleUpdate(Folder(), program::Executable().filename().string(), canRun);
  Lock().Share();
  switch (settled.what) {
    case Settlement::What::Nothing:
      return std::nullopt;
    case Settlement::What::Dropped:
      return Beginning{What::Go, 0, settled.cause, true};
    case Settlement::What::Swapped:
      return Guard();
    case Settlement::What::TakenBack:
      process::Become(program::Executable());
      return Beginning{What::Failed, 1, std::make_error_code(std::errc::io_error)};
    case Settlement::What::Failed:
      return Beginning{What::Failed, 1, settled.cause};
  }
  return std::nullopt;
}

/// Where the folder cannot be locked, nothing in it is changed.
Beginning BeginUnlocked(std::error_code cause) {
  const auto journal = ReadJournal(Folder());
  const bool whole =
      journal ? journal->state == State::Staged || journal->state == State::Moved : !HasEarlierSwap(Folder());
  return whole ? Beginning{} : Beginning{What::Failed, 1, cause};
}

}  // namespace

Beginning BeginProgram(const CanRun& canRun) {
  if (program::IsInstalled()) return {};
  const Clock::time_point begin = Clock::now();
  if (const std::error_code error = Lock().Open(Folder() / kLockName)) return BeginUnlocked(error);
  for (;; Lock().Release(), Rest()) {
    const std::error_code error = Lock().Share();
    if (error && !IsBusy(error)) return BeginUnlocked(error);
    if (!error) {
      // The name may have gone to another release between the start of this process and the lock.
      if (program::IsReplaced()) process::Become(program::Executable());
      const auto journal = ReadJournal(Folder());
      if (journal ? IsSettled(*journal) : !HasEarlierSwap(Folder())) return {};
      const std::error_code claimed = Lock().Claim();
      if (!claimed) {
        if (const auto beginning = Settle(canRun)) return *beginning;
        continue;
      }
      if (!IsBusy(claimed)) return BeginUnlocked(claimed);
      // The files are of one release still: the update waits until the others have ended.
      if (journal && journal->state == State::Moved) return {};
      if (journal && journal->state == State::Staged && Clock::now() - begin > kStagedPatience) return {};
    }
    if (Clock::now() - begin > kPatience) return {What::Busy, 1};
  }
}

Beginning JoinFolder() {
  if (program::IsInstalled()) return {};
  const Clock::time_point begin = Clock::now();
  if (const std::error_code error = Lock().Open(Folder() / kLockName)) return BeginUnlocked(error);
  for (std::error_code error; (error = Lock().Share()); Rest()) {
    if (!IsBusy(error)) return BeginUnlocked(error);
    if (Clock::now() - begin > kPatience) return {What::Busy, 1};
  }
  if (program::IsReplaced()) process::Become(program::Executable());
  return BeginUnlocked(std::make_error_code(std::errc::device_or_resource_busy));
}

std::string WhyNoStart(const Beginning& beginning) {
  if (beginning.what == What::Busy)
    return "This program is being updated by another window. Finish there, then start it again.";
  if (beginning.what != What::Failed) return {};
  return "An update of this program was cut off and can neither be completed nor undone.\r\n" +
         beginning.cause.message() +
         "\r\n\r\nSee to it that its folder can be written and has room, then start it again. If that does "
         "not help, unpack the program anew.";
}

bool TryProgram(const std::filesystem::path& program) {
  process::Beside trial;
  if (trial.Start({program.string(), std::string(kTrial)})) return false;
  const Clock::time_point end = Clock::now() + kTrialPatience;
  while (trial.Runs()) {
    if (Clock::now() > end) return trial.Kill(), false;
    std::this_thread::sleep_for(1ms);
  }
  return trial.Status() == 0;
}

std::error_code ClaimFolder() {
  const std::filesystem::path file = Folder() / kLockName;
  if (!Lock().IsOpen(file)) {
    if (const std::error_code error = Lock().Open(file)) return error;
    Lock().Share();
  }
  return Lock().Claim();
}

void ShareFolder() {
  Lock().Share();
}

std::string FirstPageShown() {
  ConfirmUpdate(Folder());
  if (const auto journal = ReadJournal(Folder()); journal && journal->state == State::Staged)
    return "An update is ready. It is installed when this program is started while no window of it is open.";
  auto refused = ReadRefused(Folder());
  if (!refused || refused->told) return {};
  refused->told = true;
  WriteRefused(Folder(), *refused);
  return "Version " + refused->version +
         " of this program does not run on this computer. The version before it is in place again.";
}

}  // namespace tarnwick
