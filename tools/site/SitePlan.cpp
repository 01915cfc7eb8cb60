#include "SitePlan.h"

#include <cstdio>
#include <set>

#include "Keys.h"
#include "SitePackages.h"
#include "platform/files.h"
#include "platform/http.h"
#include "platform/text.h"
#include "webupdate/Answer.h"
#include "webupdate/Catalogue.h"
#include "webupdate/HarmlessName.h"

namespace tarnwick::site {
namespace {

namespace fs = std::filesystem;

/// A folder of packages, the tag of its rows, and its class of device.
struct PackageSource {
  const char* folder;
  char tag;
  std::int32_t deviceClass;
};
constexpr PackageSource kPackageSources[] = {{"MotorControllers", '@', 0}, {"Accessories", '%', 1}};
constexpr const char* kProgramSource = "Program";
constexpr std::string_view kTags = "$@%";

/// Names that the program would refuse, names that meet on the site, and lines that would pass for rows.
void CheckFiles(SitePlan& plan) {
  std::set<std::string> taken{text::Upper(kCatalogueName)};
  for (const SiteFile& file : plan.files) {
    const auto fault = [&](const std::string& what) { plan.faults.push_back(file.name + ": " + what); };
    if (!IsHarmlessName(file.name) || file.name.find(',') != std::string::npos) {
      fault("the program takes no file of this name");
    }
    if (!taken.insert(text::Upper(file.name)).second) fault("the site has another file of this name");
    if (file.content.empty()) fault("empty");
    const AnswerKind kind = file.tag == '$' ? AnswerKind::Good : JudgeContent(file.content);
    if (kind == AnswerKind::Page || kind == AnswerKind::Refused)
      fault("the program would take it for a web page");
    if (file.content.size() > http::kLargestAnswer) fault("the program takes no file of this size");
    for (const std::string& line : file.lines) {
      if (!line.empty() && kTags.find(line.front()) != std::string_view::npos) {
        fault("a line of the note begins with \"" + line.substr(0, 1) + "\", as a row of the catalogue does");
      }
    }
  }
}

/// Folders that are passed over are so by mistake: names differ in case alone, or a package lies outside.
void CheckFolders(SitePlan& plan, const fs::path& source) {
  for (const std::string& name : NamesIn(source)) {
    if (name != kProgramSource && name != kPackageSources[0].folder && name != kPackageSources[1].folder)
      plan.faults.push_back((source / name).string() +
                            ": not one of MotorControllers, Accessories and Program, spelt so");
  }
}

/// Notes that together make the program take the whole catalogue for a refusal.
void CheckCatalogue(SitePlan& plan) {
  if (JudgeContent(plan.catalogue) != AnswerKind::Refused) return;
  for (const SiteFile& file : plan.files) {
    for (std::size_t i = 0; i < file.lines.size(); ++i) {
      const std::string line = text::Upper(file.lines[i]);
      if (line.find("<HTML>") != line.npos || line.find("UNAUTHORISED") != line.npos)
        plan.faults.push_back(
            file.name + ": line " + std::to_string(i + 1) +
            " of its note: with \"<HTML>\" and \"unauthorised\" in it, the program would take "
            "the catalogue for a refusal");
    }
  }
}

/// No line end behind the last line: it would be an empty line of the description before it.
std::string CatalogueText(const std::vector<SiteFile>& files) {
  std::string text;
  const auto add = [&](const std::string& line) {
    if (!text.empty()) text += text::kLineEnd;
    text += line;
  };
  for (const SiteFile& file : files) {
    add(file.tag + file.name + "," + file.second + "," + std::to_string(file.content.size()));
    for (const std::string& line : file.lines) add(line);
  }
  return text;
}

std::string DescriptionOf(const SiteFile& file) {
  std::string text;
  for (const std::string& line : file.lines) text.append(line).append(text::kLineEnd);
  return text;
}

bool IsSame(const FileEntry& read, const SiteFile& file) {
  return read.Name + "." + read.Ext == file.name && read.Date == file.second &&
         read.Size == static_cast<std::int32_t>(file.content.size()) &&
         read.Description == DescriptionOf(file);
}

bool IsSame(const ProgramEntry& read, const SiteFile& file) {
  return read.Name == file.name && read.Version == file.second &&
         read.Size == static_cast<std::int32_t>(file.content.size());
}

/// Reads the catalogue as the program will: what it finds has to be what was meant.
void ReadBack(SitePlan& plan) {
  for (const PackageSource& source : kPackageSources) {
    Catalogue read;
    read.Load(plan.catalogue, source.deviceClass);
    std::int32_t packages = 0;
    std::int32_t programs = 0;
    for (const SiteFile& file : plan.files) {
      bool same = true;
      if (file.tag == source.tag) same = ++packages <= read.FileCount() && IsSame(read.Files(packages), file);
      if (file.tag == '$') same = ++programs <= read.ProgramCount() && IsSame(read.Programs(programs), file);
      if (!same) plan.faults.push_back(file.name + ": the program would not find this in the catalogue");
    }
  }
}

bool Put(const fs::path& path, std::string_view content) {
  const std::error_code error = files::Replace(path, content);
  if (error) std::fprintf(stderr, "%s: %s\n", path.string().c_str(), error.message().c_str());
  return !error;
}

}  // namespace

SitePlan MakePlan(const fs::path& source, const Signing& signing) {
  SitePlan plan;
  AddProgramFiles(plan, source / kProgramSource);
  std::string release;
  if (!plan.files.empty() && plan.faults.empty()) release = SignRelease(plan, signing);
  for (const PackageSource& each : kPackageSources)
    AddPackages(plan, source / each.folder, each.tag, signing);
  CheckFolders(plan, source);
  CheckFiles(plan);
  if (plan.files.empty()) plan.faults.push_back(source.string() + ": nothing to publish");
  plan.catalogue = release + CatalogueText(plan.files);
  CheckCatalogue(plan);
  if (plan.faults.empty()) ReadBack(plan);
  return plan;
}

bool Publish(const SitePlan& plan, const fs::path& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  for (const SiteFile& file : plan.files) {
    if (!Put(folder / file.name, file.content)) return false;
  }
  return Put(folder / kCatalogueName, plan.catalogue);
}

}  // namespace tarnwick::site
