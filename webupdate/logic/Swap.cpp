#include "webupdate/Swap.h"

#include <optional>
#include <string>

#include "platform/files.h"
#include "platform/process.h"
#include "platform/text.h"
#include "webupdate/HarmlessName.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kScriptName = "WebUpdate.sh";
constexpr std::string_view kJournalName = "WebUpdate.journal";
constexpr std::string_view kJournalHead = "tarnwick swap 1";
constexpr std::uintmax_t kLongestJournal = 1u << 20;

constexpr std::string_view kScript = R"(#!/bin/sh
# Puts the files of a fetched update into their places, and starts the new program.
#   WebUpdate.sh FOLDER PROGRAM [NEW OLD]...
# NEW and OLD are names in FOLDER. The input of this script ends when the old program does.
script=$0
program=$2
cd -- "$1" || exit 1
shift 2

all_there() {
  while [ $# -gt 0 ]; do
    [ -f "./$1" ] && [ ! -d "./$2" ] || return 1
    shift 2
  done
}

swap() {
  while [ $# -gt 0 ]; do
    mv -f -- "./$1" "./$2" || return 1
    shift 2
  done
}

while read -r _; do :; done

if all_there "$@" && swap "$@"; then
  sync .  # the names are kept before the journal goes
  rm -f -- ./WebUpdate.journal
  cd - >/dev/null || cd /
  "$program" </dev/null &
fi
rm -f -- "$script"
)";

std::string JournalText(const std::vector<SwapFile>& files) {
  std::string text = std::string(kJournalHead) + "\n";
  for (const SwapFile& file : files) text += file.fetched + "\n" + file.installed + "\n";
  return text + "end\n";
}

/// The files of a journal; none when it is not whole, or names what it may not.
std::optional<std::vector<SwapFile>> ReadJournal(const std::string& text) {
  const std::vector<std::string_view> lines = text::Split(text, '\n');
  if (lines.size() < 3 || lines.size() % 2 == 0 || lines.front() != kJournalHead ||
      lines[lines.size() - 2] != "end" || !lines.back().empty())
    return std::nullopt;
  std::vector<SwapFile> files;
  for (std::size_t line = 1; line + 2 < lines.size(); line += 2) {
    files.push_back({std::string(lines[line]), std::string(lines[line + 1])});
    if (!files.back().fetched.starts_with('$') || !IsHarmlessName(files.back().fetched) ||
        !IsHarmlessName(files.back().installed))
      return std::nullopt;
  }
  return files;
}

}  // namespace

std::string_view SwapScript() {
  return kScript;
}

std::error_code WriteSwap(const fs::path& folder, const std::vector<SwapFile>& files) {
  if (const std::error_code error = files::Replace(folder / kScriptName, kScript)) return error;
  const std::error_code error = files::Replace(folder / kJournalName, JournalText(files));
  if (error) files::Remove(folder / kScriptName);
  return error;
}

bool StartSwap(const fs::path& folder, const std::vector<SwapFile>& files, const fs::path& program) {
  process::Command command{"/bin/sh", (folder / kScriptName).string(), folder.string(), program.string()};
  for (const SwapFile& file : files) {
    command.push_back(file.fetched);
    command.push_back(file.installed);
  }
  if (process::StartFollower(command)) return true;
  files::Remove(folder / kJournalName);
  files::Remove(folder / kScriptName);
  return false;
}

Unfinished CompleteSwap(const fs::path& folder) {
  const std::optional<std::string> text = files::ReadWhole(folder / kJournalName, kLongestJournal);
  if (!text) return Unfinished::None;
  // A journal is put in place whole: one that reads otherwise was not made here, and is left to the user.
  const auto swap = ReadJournal(*text);
  if (!swap) return Unfinished::None;
  for (const SwapFile& file : *swap) {
    // One that is no longer there has its name already.
    if (!files::FileExists(folder / file.fetched)) continue;
    if (files::Rename(folder / file.fetched, folder / file.installed)) return Unfinished::Failed;
  }
  if (files::Remove(folder / kJournalName)) return Unfinished::Failed;
  files::Remove(folder / kScriptName);
  return Unfinished::Completed;
}

}  // namespace tarnwick
