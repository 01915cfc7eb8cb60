// The update site's catalogue, merged with the packages in the firmware folder.
//
// docs/update-site.md tells the format. Whatever the text holds, no entry has a name that leads out of
// its folder.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "platform/http.h"

namespace tarnwick {

/// One firmware package. It is in the folder, in the catalogue, or both.
struct FileEntry {
  std::string Name;         ///< The file's name without its last four characters.
  std::string Ext;          ///< The last three characters of its name in the catalogue; empty when not there.
  std::string Date;         ///< "yyyy-mm-dd", of the catalogue, else of the local file.
  std::int32_t Size = 0;    ///< Bytes, by the catalogue, else of the local file.
  std::string Description;  ///< Lines, each ended by CR LF.
  bool Local = false;
  bool Remote = false;
  std::string LocalFile = {};  ///< The file's own name in the folder; empty when not there.
};

/// One file of the program.
struct ProgramEntry {
  std::string Name;       ///< With extension, as the catalogue gives it.
  std::string LocalName;  ///< "$" and `Name`: under this name the file is saved first.
  std::int32_t Size = 0;  ///< Bytes.
  std::string Version;    ///< Three numbers with points between them, or a date "yyyy-mm-dd".
  bool Newer = false;     ///< Than what is installed.
};

class Catalogue {
 public:
  /// A longer text is no catalogue, a longer line of it no line, and what goes beyond that many entries
  /// is left out. Bytes, bytes, entries.
  static constexpr std::size_t kLongestText = http::kLargestAnswer;
  static constexpr std::size_t kLongestLine = 1u << 20;
  static constexpr std::int32_t kMostEntries = 100'000;

  /// Drops all entries and takes those that `text` has for the class of device. A class other than 0 or 1
  /// has no packages.
  void Load(std::string_view text, std::int32_t deviceClass);
  /// Adds the packages of `folder`, with their notes where the catalogue does not know them. One whose name
  /// differs in case alone is that of the catalogue; of several the one that is spelt so, and each other one
  /// has a row of its own.
  void MergeLocalFiles(const std::filesystem::path& folder);
  /// Orders the packages by name, ascending by character code.
  void SortFiles();

  /// Whether packages were left out for their number.
  bool IsCut() const { return mCut; }

  /// What stands above the first row of a package, lines of a release among it.
  const std::string& Head() const { return mHead; }

  /// Both lists are numbered from 1; an index outside is the caller's fault.
  std::int32_t FileCount() const { return static_cast<std::int32_t>(mFiles.size()); }
  FileEntry& Files(std::int32_t index) { return mFiles[static_cast<std::size_t>(index) - 1]; }
  const FileEntry& Files(std::int32_t index) const { return mFiles[static_cast<std::size_t>(index) - 1]; }
  std::int32_t ProgramCount() const { return static_cast<std::int32_t>(mPrograms.size()); }
  ProgramEntry& Programs(std::int32_t index) { return mPrograms[static_cast<std::size_t>(index) - 1]; }
  const ProgramEntry& Programs(std::int32_t index) const {
    return mPrograms[static_cast<std::size_t>(index) - 1];
  }

  /// Takes a package off the list; the ones behind it move up.
  void DeleteFile(std::int32_t index) { mFiles.erase(mFiles.begin() + index - 1); }

 private:
  void TakeLine(std::string_view line, char ownTag);
  void TakePackage(std::string_view line);
  void TakeProgram(std::string_view line);

  std::vector<FileEntry> mFiles;
  std::vector<ProgramEntry> mPrograms;
  std::string mHead;
  bool mCut = false;
  bool mSkip = false;  ///< The last package of the text was not taken, so neither are the lines below it.
};

}  // namespace tarnwick
