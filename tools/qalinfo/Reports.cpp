#include "Reports.h"

#include <algorithm>

#include "Images.h"
#include "firmware/QalWriter.h"
#include "platform/codepage.h"
#include "platform/text.h"

namespace tarnwick::qalinfo {
namespace {

/// As UTF-8, with a "?" for each control character: a package must not steer a terminal.
std::string Shown(std::string_view value) {
  std::string harmless(value);
  const auto isControl = [](char byte) {
    const char16_t character = text::ToUnicode(byte);
    return character < 0x20 || (character >= 0x7F && character < 0xA0);
  };
  std::replace_if(harmless.begin(), harmless.end(), isControl, '?');
  return text::ToUtf8(harmless);
}

void Line(std::FILE* out, const char* what, const std::string& value) {
  std::fprintf(out, "  %-19s %s\n", what, value.c_str());
}

void WriteHeader(std::FILE* out, const QALclass& package) {
  char version[32];
  std::snprintf(version, sizeof version, "%.1f", package.FileVersion());
  Line(out, "Format version", version);
  Line(out, "File name", Shown(package.Filename()));
  Line(out, "File date", Shown(package.FileDate()));
  Line(out, "Comments", Shown(package.Comments()));
  Line(out, "Model", std::to_string(package.ModelNumber()) + " " + Shown(package.ModelName()));
  Line(out, "Hardware revisions", package.HwRevCount() == 0 ? "none listed" : Shown(package.HwRev()));
  Line(out, "Devices", std::to_string(package.Devices()));
}

void WriteDevices(std::FILE* out, const QALclass& package) {
  ImageIndex images(package);
  for (std::int32_t device = 1; device <= package.Devices(); ++device) {
    std::fprintf(out, "    %d: %s, address %d, record id %s, version %s", device,
                 Shown(package.DeviceName(device)).c_str(), package.DeviceAddress(device),
                 Shown(package.DeviceRecordID(device)).c_str(),
                 text::Fixed2(package.DeviceVersion(device)).c_str());
    if (!package.ErrorsFound()) {
      std::fprintf(out, ", %d words, %d of them padded", package.DeviceWords(device) + 1,
                   images.Padded(device));
    }
    std::fputc('\n', out);
  }
}

}  // namespace

std::string ShownPath(const QALclass& package) {
  const std::string& path = package.RealFilename().native();
  return text::IsUtf8(path) ? path : text::ToUtf8(path);
}

void WriteText(std::FILE* out, const QALclass& package) {
  std::fprintf(out, "%s\n", ShownPath(package).c_str());
  WriteHeader(out, package);
  WriteDevices(out, package);
  if (!package.ErrorsFound()) {
    std::fputs("  No errors\n", out);
  } else {
    std::fprintf(out, "  Error %d : %s at Line %d\n", package.LastError(), package.LastErrorMessage().c_str(),
                 package.LastErrorLine());
  }
}

void WriteImage(std::FILE* out, const QALclass& package, std::int32_t device) {
  const std::string text = IntelHexText(BytesOf(package.DeviceImage(device)));
  std::fwrite(text.data(), 1, text.size(), out);
}

}  // namespace tarnwick::qalinfo
