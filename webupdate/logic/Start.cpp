#include "webupdate/Start.h"

#include <chrono>
#include <optional>
#include <random>
#include <thread>
#include <utility>

#include "platform/FileLock.h"
#include "platform/files.h"
#include "platform/process.h"
#include "platform/program.h"
#include "platform/record.h"
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

/// What the first page is to tell of an update that was not installed.
std::string& Told() {
  static std::string told;
  return told;
}

/// True for what will not be otherwise the next time that the program is started.
bool IsFinal(std::error_code error) {
  return error == std::errc::executable_format_error || error == std::errc::no_such_file_or_directory;
}

void Record(const Settlement& settled) {
  const std::string why = SetbackText(settled.why);
  if (settled.what == Settlement::What::Dropped) record::Failure("update of the program, not installed", why);
  if (settled.what == Settlement::What::TakenBack) record::Failure("update of the program, taken back", why);
  if (settled.what == Settlement::What::Failed)
    record::Failure("update of the program, neither done nor undone", why);
}

Beginning Fail(std::error_code cause) {
  record::Failure("start", "program and link library could be of two releases: " + cause.message());
  return {What::Failed, 1, cause};
}

/// This process becomes the program that bears its name.
Beginning BecomeAnew() {
  return Fail(process::Become(program::Executable()));
}

/// Takes an update back that the running program has just put in place, and is the program again. Others that
/// have the folder are waited for: a moment where the new program can be started, whose next start sees to
/// it, else until they have ended.
Beginning GoBack(const Setback& why) {
  const Clock::time_point end = Clock::now() + kStagedPatience;
  while (const std::error_code error = Lock().Claim()) {
    if (!IsBusy(error)) return Fail(error);
    if (why.kind != Setback::Kind::NotStarted && Clock::now() > end) return {What::End, 1};
    Rest();
  }
  const Settlement settled = TakeBack(Folder(), why);
  Record(settled);
  if (settled.what == Settlement::What::Failed) return {What::Failed, 1, settled.why.cause};
  Lock().Share();
  return BecomeAnew();
}

/// Starts the new program and stays until it has shown its first page. One that cannot be started, or ends
/// before that twice, is taken back.
Beginning Guard() {
  for (;;) {
    auto journal = ReadJournal(Folder());
    if (!journal) return {What::End};
    const int before = Attempts(Folder(), *journal);
    process::Beside program;
    if (const std::error_code error = program.Start({program::Executable().string()})) {
      if (IsFinal(error)) return GoBack({Setback::Kind::NotStarted, {}, error});
      return BecomeAnew();  // No process or memory for a second one just now: that takes none.
    }
    while (program.Runs()) {
      if (!ReadJournal(Folder())) return {What::End};
      std::this_thread::sleep_for(kRound);
    }
    if (!(journal = ReadJournal(Folder()))) return {What::End};
    const int attempts = Attempts(Folder(), *journal);
    if (attempts >= kMostAttempts) return GoBack({Setback::Kind::EndedEarly});
    if (attempts <= before) return {What::End, program.Status()};  // Without a display nothing is proved.
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
    return error ? std::optional(Fail(error)) : std::nullopt;
  }
  const Settlement settled = SettleUpdate(Folder(), program::Executable().filename().string(), canRun);
  Lock().Share();
  Record(settled);
  switch (settled.what) {
    case Settlement::What::Nothing:
      return std::nullopt;
    case Settlement::What::Swapped:
      return Guard();
    case Settlement::What::Failed:
      return Beginning{What::Failed, 1, settled.why.cause};
    case Settlement::What::Dropped:
    case Settlement::What::TakenBack:
      break;
  }
  // What is installed may be of another release than this process.
  if (program::IsReplaced()) return BecomeAnew();
  const auto refused = ReadRefused(Folder());  // That is told in words of its own.
  if (settled.why.kind != Setback::Kind::Installed && settled.why.kind != Setback::Kind::UnpackedAnew &&
      (!refused || refused->told))
    Told() =
        "The update of this program was not installed, and the version before it stays. The file "
        "Tarnwick.log says why.";
  return Beginning{};
}

/// Where the folder cannot be locked, nothing in it is changed: whether its files are of one release.
std::error_code WhyMixed(std::error_code cause) {
  std::error_code unread;
  const auto journal = ReadJournal(Folder(), unread);
  if (unread) return unread;
  const bool whole =
      journal ? journal->state == State::Staged || journal->state == State::Moved : !HasEarlierSwap(Folder());
  return whole ? std::error_code() : cause;
}

Beginning BeginUnlocked(std::error_code cause) {
  const std::error_code mixed = WhyMixed(cause);
  return mixed ? Fail(mixed) : Beginning{};
}

Beginning JoinUnlocked(std::error_code cause) {
  const std::error_code mixed = WhyMixed(cause);
  return mixed ? Beginning{What::Waits, 1, mixed} : Beginning{};
}

Beginning TellBusy() {
  record::Failure("start", "another window has been changing the program's files for too long");
  return {What::Busy, 1, std::make_error_code(std::errc::device_or_resource_busy)};
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
      if (program::IsReplaced()) {
        const std::error_code unstarted = process::Become(program::Executable());
        if (Clock::now() - begin > kPatience) return Fail(unstarted);
        continue;  // Who put it there takes it back.
      }
      std::error_code unread;
      const auto journal = ReadJournal(Folder(), unread);
      if (unread) return Fail(unread);
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
    if (Clock::now() - begin > kPatience) return TellBusy();
  }
}

Beginning JoinFolder() {
  if (program::IsInstalled()) return {};
  const Clock::time_point begin = Clock::now();
  if (const std::error_code error = Lock().Open(Folder() / kLockName)) return JoinUnlocked(error);
  for (std::error_code error; (error = Lock().Share()); Rest()) {
    if (!IsBusy(error)) return JoinUnlocked(error);
    if (Clock::now() - begin > kPatience) return TellBusy();
  }
  if (program::IsReplaced()) return {What::Waits, 1, process::Become(program::Executable())};
  return JoinUnlocked(std::make_error_code(std::errc::device_or_resource_busy));
}

std::string WhyNoStart(const Beginning& beginning) {
  switch (beginning.what) {
    case What::Go:
    case What::End:
      return {};
    case What::Busy:
      return "This program is being updated by another window. Finish there, then start it again.";
    case What::Waits:
      return "An update of this program was cut off. Start Tarnwick once, then try again.";
    case What::Failed:
      break;
  }
  return "An update of this program was cut off and can neither be completed nor undone.\r\n" +
         beginning.cause.message() +
         "\r\n\r\nSee to it that its folder can be written and has room, then start it again. If that does "
         "not help, unpack the program anew.";
}

Setback TryProgram(const std::filesystem::path& program) {
  using Kind = Setback::Kind;
  process::Beside trial;
  if (const std::error_code error = trial.Start({program.string(), std::string(kTrial)}))
    return {IsFinal(error) ? Kind::CannotRun : Kind::NotTried, {}, error};
  const Clock::time_point end = Clock::now() + kTrialPatience;
  while (trial.Runs()) {
    if (Clock::now() > end)
      return trial.Kill(), Setback{Kind::NotTried, {}, std::make_error_code(std::errc::timed_out)};
    std::this_thread::sleep_for(1ms);
  }
  if (trial.Status() == 0) return {};
  return {trial.Status() > 0 ? Kind::CannotRun : Kind::NotTried};
}

void TellUnseen() {
  if (const auto journal = ReadJournal(Folder()); journal && journal->state == State::Moved)
    ForgetAttempt(Folder(), *journal);
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
  if (!refused || refused->told) return std::exchange(Told(), {});
  refused->told = true;
  WriteRefused(Folder(), *refused);
  return "Version " + refused->version +
         " of this program does not run on this computer. The version before it is in place again.";
}

}  // namespace tarnwick
