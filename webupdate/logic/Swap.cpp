#include "webupdate/Swap.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "link/LinkLibrary.h"
#include "platform/files.h"
#include "platform/process.h"
#include "platform/program.h"
#include "webupdate/Release.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;
using What = Settlement::What;
using State = Journal::State;
using Kind = Setback::Kind;

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

/// The digest of what lies under `path`; empty, with the cause, where nothing can be read there.
std::string DigestAt(const fs::path& path, std::error_code& error) {
  const std::optional<std::string> content = files::ReadWhole(path, UINTMAX_MAX, error);
  return content ? DigestOf(*content) : std::string();
}
std::string DigestAt(const fs::path& path) {
  std::error_code ignored;
  return DigestAt(path, ignored);
}

/// An update and the folder that it is for.
class Update {
 public:
  Update(const fs::path& folder, Journal journal)
      : mFolder(folder), mStaging(folder / journal.folder), mJournal(std::move(journal)) {
    if (TrustedKey()) mRelease = ReadRelease(mJournal.lists, *TrustedKey(), program::System());
  }

  Settlement Forward(const std::string& program, const CanRun& canRun);
  Settlement Back(const Setback& why);
  Settlement Refuse(const Setback& why) {
    mJournal.state = State::Refused;
    return Back(why);
  }

 private:
  struct Move {
    std::string name;
    std::string digest;
    ReleaseFile::Kind kind;
  };

  std::optional<std::vector<Move>> Plan(Setback& why) const;
  std::error_code TakeName(const std::string& program);
  Setback Try(const std::vector<Move>& moves, const CanRun& canRun) const;
  Settlement Drop(Setback why);
  Settlement Stay(const Setback& why);
  Setback KeepOld(const std::vector<Move>& moves);
  std::error_code Commit(State state);
  std::string NewDigest(const std::string& name) const;
  bool IsUnpackedAnew(Setback& unread) const;
  Setback Restore(const OldFile& file) const;

  const fs::path& mFolder;
  fs::path mStaging;
  Journal mJournal;
  std::optional<Release> mRelease;  ///< What the journal's list says, where it is believed.
};

/// What has to be moved, the program last. None where the list is not believed, is older than this program,
/// or a file is neither in place nor there to be moved.
std::optional<std::vector<Update::Move>> Update::Plan(Setback& why) const {
  const program::Identity& self = program::This();
  const auto refuse = [&why](const Setback& cause) {
    why = cause;
    return std::nullopt;
  };
  if (!mRelease) return refuse({Kind::NotBelieved});
  if (*ReadVersion(mRelease->version) < VersionNumbers{self.major, self.minor, self.revision})
    return refuse({Kind::Older});
  std::vector<Move> moves;
  std::vector<Move> last;
  for (const ReleaseFile& file : mRelease->files) {
    const std::string name = InstalledName(file, mJournal.program);
    if (DigestAt(mFolder / name) == file.digest) continue;
    std::error_code error;
    if (DigestAt(mStaging / name, error) != file.digest)
      return refuse({!error                                          ? Kind::NotTheFile
                     : error == std::errc::no_such_file_or_directory ? Kind::Missing
                                                                     : Kind::NotReadOrMoved,
                     name, error});
    (file.kind == ReleaseFile::Kind::Program ? last : moves).push_back({name, file.digest, file.kind});
  }
  moves.insert(moves.end(), last.begin(), last.end());
  return moves;
}

/// The program may have got another name since it was fetched: it is installed under the one that it has.
std::error_code Update::TakeName(const std::string& program) {
  const fs::path fetched = mStaging / std::exchange(mJournal.program, program);
  if (fetched.filename() == program || !files::FileExists(fetched)) return {};
  return files::Rename(fetched, mStaging / program);
}

/// Lets the program look whether it can run with the library, both as they will be.
Setback Update::Try(const std::vector<Move>& moves, const CanRun& canRun) const {
  const auto runs = [](const Move& move) { return move.kind != ReleaseFile::Kind::Other; };
  if (std::none_of(moves.begin(), moves.end(), runs)) return {};
  const fs::path program = mStaging / mJournal.program;
  if (!files::FileExists(program)) {  // The one that is installed stays: a copy of it tries the new library.
    std::error_code error;
    const auto content = files::ReadWhole(mFolder / mJournal.program, UINTMAX_MAX, error);
    if (content) error = files::Create(program, *content, fs::perms(0755));
    if (error) return {Kind::NotTried, mJournal.program, error};
  }
  return canRun(program);
}

Settlement Update::Drop(Setback why) {
  if (const std::error_code error = DropJournal(mFolder)) why.cause = error;
  return {What::Dropped, why};
}

/// The release before stays, or comes back.
Settlement Update::Stay(const Setback& why) {
  return mJournal.state == State::Staged ? Drop(why) : Back(why);
}

std::error_code Update::Commit(State state) {
  const State before = std::exchange(mJournal.state, state);
  const std::error_code error = WriteJournal(mFolder, mJournal);
  if (error) mJournal.state = before;
  return error;
}

/// Copies what is replaced, with right and date, and notes it, the program first.
Setback Update::KeepOld(const std::vector<Move>& moves) {
  std::error_code error;
  fs::remove_all(mStaging / kOldFolder, error);  // An attempt that was cut left it.
  if (error || (error = files::MakeFolder(mStaging / kOldFolder)))
    return {Kind::NotReadOrMoved, std::string(kOldFolder), error};
  for (auto move = moves.rbegin(); move != moves.rend(); ++move) {
    const fs::path installed = mFolder / move->name;
    const fs::path old = mStaging / kOldFolder / move->name;
    const fs::file_status status = fs::status(installed, error);
    if (status.type() == fs::file_type::not_found) {
      mJournal.old.push_back({move->name, {}});
      continue;
    }
    const std::optional<std::string> content = files::ReadWhole(installed, UINTMAX_MAX, error);
    if (content) error = files::Create(old, *content, status.permissions());
    if (error) return {Kind::NotReadOrMoved, move->name, error};
    files::CopyLastModified(installed, old);
    mJournal.old.push_back({move->name, DigestOf(*content)});
  }
  return {};
}

Settlement Update::Forward(const std::string& program, const CanRun& canRun) {
  const auto failed = [](const std::string& file, std::error_code error) {
    return Setback{Kind::NotReadOrMoved, file, error};
  };
  const bool staged = mJournal.state == State::Staged;
  if (staged)
    if (const std::error_code error = TakeName(program)) return Drop(failed(program, error));
  Setback why;
  const auto moves = Plan(why);
  if (!moves) return Stay(why);
  if (staged) {
    if (moves->empty()) return Drop({Kind::Installed});
    why = Try(*moves, canRun);
    if (why.kind == Kind::CannotRun) WriteRefused(mFolder, {mJournal.version, mJournal.signature});
    if (why.kind == Kind::None) why = KeepOld(*moves);
    if (why.kind != Kind::None) return Drop(why);
    if (const std::error_code error = Commit(State::Moving)) return Drop(failed({}, error));
  }
  for (const Move& move : *moves)
    if (const std::error_code error = files::Rename(mStaging / move.name, mFolder / move.name))
      return Stay(failed(move.name, error));
  if (const std::error_code error = Commit(State::Moved)) return Stay(failed({}, error));
  return {What::Swapped};
}

/// Of what the list installs under that name; empty where it installs nothing there, or is not believed.
std::string Update::NewDigest(const std::string& name) const {
  for (std::size_t i = 0; mRelease && i < mRelease->files.size(); ++i)
    if (InstalledName(mRelease->files[i], mJournal.program) == name) return mRelease->files[i].digest;
  return {};
}

/// The digest of a file; empty where there is none. What cannot be read is told in `unread`.
std::string Look(const fs::path& path, Setback& unread) {
  std::error_code error;
  std::string digest = DigestAt(path, error);
  if (error && error != std::errc::no_such_file_or_directory)
    unread = {Kind::NotReadOrMoved, path.filename().string(), error};
  return digest;
}

/// Whether somebody unpacked the program over what the update left: program or library are neither the old
/// nor the new one, or all is new and the old copies are gone. Nothing that an update does leads there.
bool Update::IsUnpackedAnew(Setback& unread) const {
  bool allNew = true, lacking = false;
  for (const OldFile& file : mJournal.old) {
    const std::string there = Look(mFolder / file.name, unread);
    const std::string copy = Look(mStaging / kOldFolder / file.name, unread);
    if (unread.kind != Kind::None) return false;
    const bool isOld = there == file.digest, isNew = !isOld && there == NewDigest(file.name);
    const bool isMain = file.name == mJournal.program || file.name == LinkLibraryFile().filename();
    if (isMain && !isOld && !isNew && !there.empty()) return true;
    allNew = allNew && isNew;
    lacking = lacking || (isNew && copy != file.digest);
  }
  return allNew && lacking;
}

/// What is neither the old file nor the new one is the user's by now, and stays.
Setback Update::Restore(const OldFile& file) const {
  const fs::path installed = mFolder / file.name;
  const fs::path old = mStaging / kOldFolder / file.name;
  Setback unread;
  const std::string there = Look(installed, unread);
  const std::string copy = Look(old, unread);
  if (unread.kind != Kind::None) return unread;
  if (there == file.digest || (!there.empty() && there != NewDigest(file.name))) return {};
  if (copy != file.digest)
    return {Kind::NoWayBack, file.name, std::make_error_code(std::errc::no_such_file_or_directory)};
  const std::error_code error =
      file.digest.empty() ? files::Remove(installed) : files::Rename(old, installed);
  return error ? Setback{Kind::NotReadOrMoved, file.name, error} : Setback();
}

Settlement Update::Back(const Setback& why) {
  Setback failed;
  if (IsUnpackedAnew(failed)) return Drop({Kind::UnpackedAnew});
  if (failed.kind != Kind::None) return {What::Failed, failed};
  const State state = mJournal.state == State::Refused ? State::Refused : State::Back;
  std::error_code error = Commit(state);
  if (error) return {What::Failed, {Kind::NotReadOrMoved, {}, error}};
  for (const OldFile& file : mJournal.old)
    if (failed = Restore(file); failed.kind != Kind::None) return {What::Failed, failed};
  if (state == State::Refused) error = WriteRefused(mFolder, {mJournal.version, mJournal.signature});
  if (!error) error = DropJournal(mFolder);
  if (error) return {What::Failed, {Kind::NotReadOrMoved, {}, error}};
  return {What::TakenBack, why};
}

}  // namespace

Settlement SettleUpdate(const fs::path& folder, const std::string& program, const CanRun& canRun) {
  std::error_code error;
  const std::optional<Journal> journal = ReadJournal(folder, error);
  if (error) return {What::Failed, {Kind::NotReadOrMoved, {}, error}};
  if (!journal) return {};
  Update update(folder, *journal);
  switch (journal->state) {
    case State::Staged:
    case State::Moving:
      return update.Forward(program, canRun);
    case State::Moved:
      return Attempts(folder, *journal) < kMostAttempts ? Settlement{} : update.Refuse({Kind::EndedEarly});
    case State::Back:
      return update.Back({Kind::BegunBefore});
    case State::Refused:
      return update.Refuse({Kind::BegunBefore});
  }
  return {};
}

Settlement TakeBack(const fs::path& folder, const Setback& why) {
  std::error_code error;
  const std::optional<Journal> journal = ReadJournal(folder, error);
  if (error) return {What::Failed, {Kind::NotReadOrMoved, {}, error}};
  if (!journal || journal->state != State::Moved) return {};
  return Update(folder, *journal).Refuse(why);
}

void NoteAttempt(const fs::path& folder, const Journal& journal) {
  const std::string name = std::string(kAttempt) + std::to_string(Attempts(folder, journal) + 1);
  files::Create(folder / journal.folder / name, {}, fs::perms(0644));
}

void ForgetAttempt(const fs::path& folder, const Journal& journal) {
  const std::string name = std::string(kAttempt) + std::to_string(Attempts(folder, journal));
  if (files::FileExists(folder / journal.folder / name)) files::Remove(folder / journal.folder / name);
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
