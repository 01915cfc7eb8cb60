#include "webupdate/Swap.h"

#include <optional>
#include <vector>

#include "platform/files.h"
#include "platform/process.h"
#include "platform/program.h"
#include "webupdate/Release.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;
using What = Settlement::What;
using State = Journal::State;

constexpr std::string_view kScriptName = "WebUpdate.sh";
constexpr std::string_view kOldFolder = "old";
constexpr std::string_view kAttempt = "begun.";

constexpr std::string_view kScript = R"(#!/bin/sh
# Starts a program again.
#   WebUpdate.sh PROGRAM
# The input of this script ends when the program that wrote it does.
while read -r _; do :; done
rm -f -- "$0"
exec "$1" </dev/null
)";

/// The digest of what lies under `path`; empty where nothing can be read there.
std::string DigestAt(const fs::path& path) {
  const std::optional<std::string> content = files::ReadWhole(path);
  return content ? DigestOf(*content) : std::string();
}

/// An update and the folder that it is for.
class Update {
 public:
  Update(const fs::path& folder, Journal journal)
      : mFolder(folder), mStaging(folder / journal.folder), mJournal(std::move(journal)) {}

  Settlement Forward(const std::string& program, const CanRun& canRun);
  Settlement Back();
  Settlement Refuse() {
    mJournal.state = State::Refused;
    return Back();
  }

 private:
  struct Move {
    std::string name;
    std::string digest;
  };

  std::optional<std::vector<Move>> Plan() const;
  Settlement Drop(std::error_code cause = {});
  Settlement Stay(std::error_code cause);
  std::error_code KeepOld(const std::vector<Move>& moves);
  std::error_code Commit(State state);
  std::error_code Restore(const OldFile& file) const;

  const fs::path& mFolder;
  fs::path mStaging;
  Journal mJournal;
};

/// What has to be moved, the program last. None where the list is not believed, is older than this program,
/// or a file is neither in place nor there to be moved.
std::optional<std::vector<Update::Move>> Update::Plan() const {
  const program::Identity& self = program::This();
  if (!TrustedKey()) return std::nullopt;
  const auto release = ReadRelease(mJournal.lists, *TrustedKey(), program::System());
  if (!release || *ReadVersion(release->version) < VersionNumbers{self.major, self.minor, self.revision})
    return std::nullopt;
  std::vector<Move> moves;
  std::vector<Move> last;
  for (const ReleaseFile& file : release->files) {
    const std::string name = InstalledName(file, mJournal.program);
    if (DigestAt(mFolder / name) == file.digest) continue;
    if (DigestAt(mStaging / name) != file.digest) return std::nullopt;
    (file.kind == ReleaseFile::Kind::Program ? last : moves).push_back({name, file.digest});
  }
  moves.insert(moves.end(), last.begin(), last.end());
  return moves;
}

Settlement Update::Drop(std::error_code cause) {
  if (const std::error_code error = DropJournal(mFolder)) cause = error;
  return {What::Dropped, cause};
}

/// The release before stays, or comes back.
Settlement Update::Stay(std::error_code cause) {
  if (mJournal.state == State::Staged) return Drop(cause);
  Settlement settled = Back();
  if (!settled.cause) settled.cause = cause;
  return settled;
}

std::error_code Update::Commit(State state) {
  const State before = std::exchange(mJournal.state, state);
  const std::error_code error = WriteJournal(mFolder, mJournal);
  if (error) mJournal.state = before;
  return error;
}

/// Copies what is replaced, and notes it, the program first.
std::error_code Update::KeepOld(const std::vector<Move>& moves) {
  std::error_code error;
  fs::remove_all(mStaging / kOldFolder, error);  // An attempt that was cut left it.
  if (error || (error = files::MakeFolder(mStaging / kOldFolder))) return error;
  for (auto move = moves.rbegin(); move != moves.rend(); ++move) {
    const fs::path installed = mFolder / move->name;
    const fs::file_status status = fs::status(installed, error);
    if (status.type() == fs::file_type::not_found) {
      mJournal.old.push_back({move->name, {}});
      continue;
    }
    const std::optional<std::string> content = files::ReadWhole(installed);
    if (!content) return std::make_error_code(std::errc::io_error);
    error = files::Create(mStaging / kOldFolder / move->name, *content, status.permissions());
    if (error) return error;
    mJournal.old.push_back({move->name, DigestOf(*content)});
  }
  return {};
}

Settlement Update::Forward(const std::string& program, const CanRun& canRun) {
  if (mJournal.state == State::Staged) mJournal.program = program;
  const auto moves = Plan();
  if (!moves || (moves->empty() && mJournal.state == State::Staged)) return Stay({});
  if (mJournal.state == State::Staged) {
    if (moves->back().name == mJournal.program && !canRun(mStaging / mJournal.program)) {
      const std::error_code error = WriteRefused(mFolder, {mJournal.version, mJournal.signature});
      return Drop(error);
    }
    if (const std::error_code error = KeepOld(*moves)) return Drop(error);
    if (const std::error_code error = Commit(State::Moving)) return Drop(error);
  }
  for (const Move& move : *moves)
    if (const std::error_code error = files::Rename(mStaging / move.name, mFolder / move.name))
      return Stay(error);
  if (const std::error_code error = Commit(State::Moved)) return Stay(error);
  return {What::Swapped};
}

std::error_code Update::Restore(const OldFile& file) const {
  const fs::path installed = mFolder / file.name;
  const fs::path old = mStaging / kOldFolder / file.name;
  if (file.digest.empty()) return files::FileExists(installed) ? files::Remove(installed) : std::error_code();
  if (DigestAt(installed) == file.digest) return {};
  if (DigestAt(old) != file.digest) return std::make_error_code(std::errc::no_such_file_or_directory);
  return files::Rename(old, installed);
}

Settlement Update::Back() {
  const State state = mJournal.state == State::Refused ? State::Refused : State::Back;
  if (const std::error_code error = Commit(state)) return {What::Failed, error};
  for (const OldFile& file : mJournal.old)
    if (const std::error_code error = Restore(file)) return {What::Failed, error};
  if (state == State::Refused) {
    const std::error_code error = WriteRefused(mFolder, {mJournal.version, mJournal.signature});
    if (error) return {What::Failed, error};
  }
  if (const std::error_code error = DropJournal(mFolder)) return {What::Failed, error};
  return {What::TakenBack};
}

}  // namespace

Settlement SettleUpdate(const fs::path& folder, const std::string& program, const CanRun& canRun) {
  const std::optional<Journal> journal = ReadJournal(folder);
  if (!journal) return {};
  Update update(folder, *journal);
  switch (journal->state) {
    case State::Staged:
    case State::Moving:
      return update.Forward(program, canRun);
    case State::Moved:
      return Attempts(folder, *journal) < kMostAttempts ? Settlement{} : update.Refuse();
    case State::Back:
      return update.Back();
    case State::Refused:
      return update.Refuse();
  }
  return {};
}

Settlement TakeBack(const fs::path& folder) {
  const std::optional<Journal> journal = ReadJournal(folder);
  if (!journal || journal->state != State::Moved) return {};
  return Update(folder, *journal).Refuse();
}

void NoteAttempt(const fs::path& folder, const Journal& journal) {
  const std::string name = std::string(kAttempt) + std::to_string(Attempts(folder, journal) + 1);
  files::Create(folder / journal.folder / name, {}, fs::perms(0644));
}

int Attempts(const fs::path& folder, const Journal& journal) {
  int count = 0;
  const auto noted = [&](int number) {
    return files::FileExists(folder / journal.folder / (std::string(kAttempt) + std::to_string(number)));
  };
  while (count < kMostAttempts && noted(count + 1)) ++count;
  return count;
}

std::error_code ConfirmUpdate(const fs::path& folder) {
  const std::optional<Journal> journal = ReadJournal(folder);
  if (journal && journal->state == State::Moved) return DropJournal(folder);
  SweepUpdates(folder);
  return {};
}

bool StartAgain(const fs::path& folder, const fs::path& program) {
  const fs::path script = folder / kScriptName;
  if (files::Replace(script, kScript)) return false;
  if (process::StartFollower({"/bin/sh", script.string(), program.string()})) return true;
  files::Remove(script);
  return false;
}

}  // namespace tarnwick
