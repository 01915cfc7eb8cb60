// libFuzzer's way into the catalogue: whatever the text, a plain reader makes the same of it, and no name
// leads out of its folder.
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/text.h"
#include "webupdate/Catalogue.h"
#include "webupdate/HarmlessName.h"

namespace {

using Strings = std::vector<std::string>;

/// Before the entry of a file of the program; no name has it.
const std::string kProgram = "\1";

Strings PlainSplit(const std::string& text, const std::string& separator) {
  Strings parts{""};
  for (std::size_t i = 0; i < text.size();) {
    if (text.compare(i, separator.size(), separator) == 0) {
      parts.emplace_back();
      i += separator.size();
    } else {
      parts.back() += text[i++];
    }
  }
  return parts;
}

std::string PlainTrim(std::string text) {
  while (!text.empty() && text.front() == ' ') text.erase(0, 1);
  while (!text.empty() && text.back() == ' ') text.pop_back();
  return text;
}

/// Name, second field and size; empty for a row that is not to be believed.
Strings PlainRow(const std::string& line) {
  Strings fields = PlainSplit(line.substr(1), ",");
  if (fields.size() < 3) return {};
  for (std::string& field : fields) field = PlainTrim(field);
  if (!tarnwick::IsHarmlessName(fields[0]) || fields[1].size() > 64) return {};
  for (const char c : fields[1]) {
    if ((c >= 0 && c < 32) || c == 127) return {};
  }
  const std::int32_t size = tarnwick::text::ToInt32(tarnwick::text::NumericPrefix(fields[2]));
  return {fields[0], fields[1], std::to_string(size < 0 ? 0 : size)};
}

bool IsPackage(const Strings& row) {
  if (row.empty() || row[0].size() < 5) return false;
  return tarnwick::text::Upper(row[0].substr(row[0].size() - 3)) != "TXT";
}

/// Packages and files of the program, as strings; descriptions behind their packages.
Strings Plain(const std::string& text, char tag) {
  Strings packages;
  Strings programs;
  bool skip = true;
  for (const std::string& whole : PlainSplit(text, "\r\n")) {
    const std::string line = PlainTrim(whole);
    const char first = line.empty() ? ' ' : line[0];
    const Strings row = first == '$' || first == '@' || first == '%' ? PlainRow(line) : Strings{};
    if (first == '$' && !row.empty()) {
      programs.push_back(kProgram + row[0] + "|" + row[1] + "|" + row[2]);
      skip = packages.empty();
    } else if (first == '@' || first == '%') {
      skip = first != tag || !IsPackage(row);
      if (!skip) packages.push_back(row[0] + "|" + row[1] + "|" + row[2] + "|");
    } else if (first != '$' && !skip) {
      packages.back() += line + "\r\n";
    }
  }
  packages.insert(packages.end(), programs.begin(), programs.end());
  return packages;
}

Strings Read(const std::string& text, std::int32_t deviceClass) {
  tarnwick::Catalogue catalogue;
  catalogue.Load(text, deviceClass);
  Strings entries;
  for (std::int32_t i = 1; i <= catalogue.FileCount(); ++i) {
    const tarnwick::FileEntry& file = catalogue.Files(i);
    const std::size_t kept = file.Name.find_first_of(std::string("/\\\0", 3));
    if (kept != std::string::npos || file.Name[0] == '.' || file.Ext.find('/') != std::string::npos)
      std::abort();
    entries.push_back(file.Name + "?" + file.Ext + "|" + file.Date + "|" + std::to_string(file.Size) + "|" +
                      file.Description);
  }
  for (std::int32_t i = 1; i <= catalogue.ProgramCount(); ++i) {
    const tarnwick::ProgramEntry& program = catalogue.Programs(i);
    entries.push_back(kProgram + program.Name + "|" + program.Version + "|" + std::to_string(program.Size));
  }
  catalogue.SortFiles();
  return entries;
}

/// Equal but for the one character before the extension, which is not looked at and stands as "?".
bool IsSame(const std::string& read, std::string plain) {
  if (read[0] == kProgram[0]) return read == plain;
  const std::size_t end = plain.find('|');
  if (end == std::string::npos || end < 4) return false;
  plain[end - 4] = '?';
  return read == plain;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  // One class of device an input: the mutations meet them all.
  const auto deviceClass = static_cast<std::int32_t>(size % 3);
  const Strings read = Read(text, deviceClass);
  const Strings plain = Plain(text, "@%\1"[deviceClass]);
  if (read.size() != plain.size()) std::abort();
  for (std::size_t i = 0; i < read.size(); ++i) {
    if (!IsSame(read[i], plain[i])) std::abort();
  }
  return 0;
}
