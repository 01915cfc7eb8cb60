#include "SitePackages.h"

#include <algorithm>
#include <map>
#include <optional>

#include "firmware/PackageFolder.h"
#include "firmware/QALclass.h"
#include "firmware/QalLint.h"
#include "platform/codepage.h"
#include "platform/files.h"
#include "platform/text.h"
#include "webupdate/PackageSignature.h"
#include "webupdate/SelfUpdate.h"
#include "webupdate/Touch.h"

namespace tarnwick::site {
namespace {

namespace fs = std::filesystem;

constexpr const char* kVersions = "versions.txt";

void AddFault(SitePlan& plan, const fs::path& file, const std::string& what) {
  plan.faults.push_back(file.string() + ": " + what);
}

/// Lines that end in CR LF or in LF alone, blanks cut from both ends of each.
std::vector<std::string> LinesOf(std::string_view content) {
  std::vector<std::string> lines;
  for (std::string_view line : text::Split(content, '\n')) {
    if (line.ends_with('\r')) line.remove_suffix(1);
    lines.emplace_back(text::Trim(line));
  }
  while (!lines.empty() && lines.back().empty()) lines.pop_back();
  return lines;
}

/// The date of the file itself.
std::string FileDate(const fs::path& file) {
  const auto time = files::LastModified(file);
  return time ? DateText(*time) : std::string();
}

/// The date that the package gives itself, as "2024.03.05", else that of its file.
std::string PackageDate(const QALclass& package, const fs::path& file) {
  std::string own = package.FileDate();
  std::replace(own.begin(), own.end(), '.', '-');
  const auto date = ReadDate(own);
  return date ? DateText(*date) : FileDate(file);
}

/// What the page with the packages would show of one without a note.
std::vector<std::string> HeaderLines(const QALclass& package) {
  std::vector<std::string> lines{"Model: " + package.ModelName()};
  if (package.Devices() > 0) lines.push_back("Version: " + text::Fixed2(package.DeviceVersion(1)));
  lines.push_back("Comments: " + package.Comments());
  return lines;
}

/// What the site says of a package: its note, else its header.
std::vector<std::string> NoteLines(SitePlan& plan, const fs::path& note, const QALclass& package) {
  if (!files::FileExists(note)) return HeaderLines(package);
  const auto text = ReadNote(note);
  if (!text) return AddFault(plan, note, "cannot be read"), std::vector<std::string>();
  std::vector<std::string> lines = LinesOf(*text);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const bool high = std::any_of(lines[i].begin(), lines[i].end(), [](char c) { return (c & 0x80) != 0; });
    if (high && text::IsUtf8(lines[i]))
      AddFault(plan, note,
               "line " + std::to_string(i + 1) +
                   ": UTF-8, which owners would read as other letters; notes are in Windows-1252");
  }
  return lines;
}

void AddPackage(SitePlan& plan, const fs::path& file, char tag, const Signing& signing) {
  std::optional<std::string> content = files::ReadWhole(file);
  if (!content) return AddFault(plan, file, "cannot be read");
  QALclass package;
  package.LoadQALfile(file);
  if (package.ErrorsFound()) {
    return AddFault(plan, file,
                    package.LastErrorMessage() + " at line " + std::to_string(package.LastErrorLine()));
  }
  for (const QalRemark& remark : LintText(*content, file.filename().string(), package)) {
    if (remark.Harmful) AddFault(plan, file, "line " + std::to_string(remark.Line) + ": " + remark.What);
  }
  if (signing.key) content = SignPackage(*content, *signing.key);
  plan.files.push_back(
      {file.filename().string(), *content, tag, PackageDate(package, file), NoteLines(plan, NoteOf(file), package)});
}

/// The lines "NAME, VERSION" of the versions, by name.
std::map<std::string, std::string> VersionsIn(const fs::path& folder) {
  std::map<std::string, std::string> versions;
  for (const std::string& line : LinesOf(files::ReadWhole(folder / kVersions).value_or(""))) {
    const std::size_t comma = std::min(line.rfind(','), line.size());
    versions[std::string(text::Trim(line.substr(0, comma)))] =
        text::Trim(line.substr(std::min(comma + 1, line.size())));
  }
  versions.erase("");
  return versions;
}

/// Three numbers with full stops between them.
bool IsVersion(std::string_view text) {
  const auto parts = text::Split(text, '.');
  return parts.size() == 3 && std::all_of(parts.begin(), parts.end(), [](std::string_view part) {
           return !part.empty() && part.find_first_not_of("0123456789") == std::string_view::npos;
         });
}

}  // namespace

std::vector<std::string> NamesIn(const fs::path& folder) {
  std::vector<std::string> names;
  std::error_code missing;
  for (const auto& entry : fs::directory_iterator(folder, missing)) names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

void AddPackages(SitePlan& plan, const fs::path& folder, char tag, const Signing& signing) {
  const std::vector<std::string> packages = PackagesIn(folder);
  for (const std::string& name : packages) AddPackage(plan, folder / name, tag, signing);
  for (const std::string& name : NamesIn(folder)) {
    const auto known = [&](const std::string& package) {
      return name == package || name == NoteOf(package).string();
    };
    if (std::none_of(packages.begin(), packages.end(), known)) {
      AddFault(plan, folder / name, "neither a package nor the note of one");
    }
  }
}

void AddProgramFiles(SitePlan& plan, const fs::path& folder) {
  std::map<std::string, std::string> versions = VersionsIn(folder);
  for (const std::string& name : NamesIn(folder)) {
    if (name == kVersions) continue;
    const std::optional<std::string> content = files::ReadWhole(folder / name);
    if (!content) {
      AddFault(plan, folder / name, "cannot be read");
      continue;
    }
    const auto told = versions.extract(name);
    const std::string version = told ? told.mapped() : FileDate(folder / name);
    if (HasVersion(name) ? !IsVersion(version) : !ReadDate(version)) {
      AddFault(plan, folder / name, HasVersion(name) ? "has no version of three numbers" : "has no date");
    }
    plan.files.push_back({name, *content, '$', version, {}});
  }
  for (const auto& [name, version] : versions) AddFault(plan, folder / kVersions, "no file " + name);
}

}  // namespace tarnwick::site
