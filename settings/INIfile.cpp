#include "settings/INIfile.h"

#include <algorithm>
#include <optional>

#include "platform/contain.h"
#include "platform/files.h"
#include "platform/record.h"
#include "platform/text.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

/// A header is a key without a value; brackets and anything behind them stay in it.
text::KeyValue ParseLine(std::string_view line) {
  const std::string clean = text::CleanLine(line);
  if (clean.starts_with('[')) return {text::Upper(clean), {}};
  return text::SplitKeyValue(clean);
}

std::optional<std::string> ReadDocument(const fs::path& path) {
  return files::ReadWhole(path, INIfile::kLargestFile);
}

std::size_t AtLeastNone(std::int64_t length) {
  return static_cast<std::size_t>(std::max<std::int64_t>(length, 0));
}

/// Puts `content` under `path`; contents that cannot be read are moved aside before, not thrown away.
void ReplaceDocument(const fs::path& path, std::string_view content) {
  std::error_code error;
  if (fs::is_regular_file(path, error) && !ReadDocument(path)) {
    fs::path aside = path;
    fs::rename(path, aside += ".old", error);
    if (error) return record::Failure("keeping the settings that cannot be read", error);
  }
  if ((error = files::Replace(path, content))) record::Failure("saving the settings " + path.string(), error);
}

}  // namespace

std::shared_ptr<INIline> INIlines::Add(std::string_view Group, std::string_view Section,
                                       std::string_view Value) {
  return mLines.emplace_back(
      std::make_shared<INIline>(INIline{std::string(Group), std::string(Section), std::string(Value)}));
}

std::int16_t INIlines::Clear() {
  mLines.clear();
  return 0;
}

std::shared_ptr<INIline> INIlines::Item(std::int32_t vntIndexKey) const {
  return mLines.at(static_cast<std::size_t>(vntIndexKey) - 1);
}

void INIlines::Remove(std::int32_t vntIndexKey) {
  mLines.at(static_cast<std::size_t>(vntIndexKey) - 1);
  mLines.erase(mLines.begin() + (vntIndexKey - 1));
}

std::shared_ptr<INIlines> INIfile::INIlines() {
  if (!mLines) mLines = std::make_shared<tarnwick::INIlines>();
  return mLines;
}

void INIfile::LoadFile(const fs::path& sFileName) {
  const auto lines = INIlines();
  lines->Clear();
  const std::optional<std::string> content = ReadDocument(sFileName);
  if (!content) return;
  std::string_view rest = *content;
  std::string_view line;
  std::string group;
  while (text::NextLine(rest, line)) {
    const auto [section, value] = ParseLine(line);
    if (section.empty()) continue;
    if (section.starts_with('[')) group = section;
    lines->Add(group, section, value);
  }
}

void INIfile::SaveFile(const fs::path& sFileName) {
  Contain([&] {
    std::string output;
    for (const auto& line : INIlines()->NewEnum()) output.append(WrittenLine(*line)).append(text::kLineEnd);
    ReplaceDocument(sFileName, output);
  });
}

std::string INIfile::WrittenLine(const INIline& line) const {
  const std::string_view section = text::Trim(line.Section);
  const std::string_view value = text::Trim(line.Value);
  if (section.empty()) return text::Upper(text::Trim(line.Group));
  std::string written(AtLeastNone(mLeadingSpaces), ' ');
  written += mUcaseSection ? text::Upper(section) : std::string(section);
  written.resize(std::max(written.size(), AtLeastNone(std::int64_t{mEqualPos} - 1)), ' ');
  written += '=';
  if (!value.empty()) written.append(" ").append(value);
  return written;
}

}  // namespace tarnwick
