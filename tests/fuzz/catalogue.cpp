// libFuzzer's way into the catalogue: whatever the text, what was read of it, written as a catalogue, reads
// as the same; and no name leads out of its folder.
#include <cstdlib>
#include <string>

#include "webupdate/Catalogue.h"
#include "webupdate/HarmlessName.h"
#include "webupdate/Packages.h"

namespace {

/// What was read of `text`, as a catalogue. The files of the program stand first, for they have no notes.
std::string Read(const std::string& text, std::int32_t deviceClass) {
  tarnwick::Catalogue catalogue;
  catalogue.Load(text, deviceClass);
  std::string read;
  const auto write = [&](char tag, const std::string& name, const std::string& second, std::int32_t size) {
    if (!tarnwick::IsHarmlessName(name) || name.find('/') != std::string::npos || size < 0) std::abort();
    read += tag + name + "," + second + "," + std::to_string(size) + "\r\n";
  };
  for (std::int32_t i = 1; i <= catalogue.ProgramCount(); ++i) {
    const tarnwick::ProgramEntry& program = catalogue.Programs(i);
    if (program.LocalName != "$" + program.Name) std::abort();
    write('$', program.Name, program.Version, program.Size);
  }
  for (std::int32_t i = 1; i <= catalogue.FileCount(); ++i) {
    const tarnwick::FileEntry& file = catalogue.Files(i);
    if (!tarnwick::IsHarmlessName(file.Name + ".txt") || !file.Remote || file.Local) std::abort();
    write(deviceClass == 0 ? '@' : '%', FileNameOf(file), file.Date, file.Size);
    read += file.Description;
  }
  // The last line end would make one line more.
  return read.substr(0, read.size() - (read.empty() ? 0 : 2));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // One class of device an input: the mutations meet them all.
  const auto deviceClass = static_cast<std::int32_t>(size % 3);
  const std::string read = Read({data, data + size}, deviceClass);
  if (Read(read, deviceClass) != read) std::abort();
  tarnwick::Catalogue catalogue;
  catalogue.Load({reinterpret_cast<const char*>(data), size}, deviceClass);
  catalogue.SortFiles();
  return 0;
}
