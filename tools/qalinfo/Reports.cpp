#include "Reports.h"

#include "Images.h"
#include "firmware/QalWriter.h"
#include "platform/codepage.h"
#include "platform/text.h"

namespace tarnwick::qalinfo {
namespace {

/// Texts of a package can be as long as a file: they are written in parts of so many bytes, so that no whole
/// one is copied.
constexpr std::size_t kTextPart = 4096;

/// A package must not steer a terminal.
void Put(std::FILE* out, const std::string& value) {
  for (std::size_t at = 0; at < value.size(); at += kTextPart) {
    std::fputs(text::ForTerminal(std::string_view(value).substr(at, kTextPart)).c_str(), out);
  }
}

void Line(std::FILE* out, const char* what, const std::string& value) {
  std::fprintf(out, "  %-19s ", what);
  Put(out, value);
  std::fputc('\n', out);
}

void WriteHeader(std::FILE* out, const QALclass& package) {
  char version[32];
  std::snprintf(version, sizeof version, "%.1f", package.FileVersion());
  Line(out, "Format version", version);
  Line(out, "File name", package.Filename());
  Line(out, "File date", package.FileDate());
  Line(out, "Comments", package.Comments());
  Line(out, "Model", std::to_string(package.ModelNumber()) + " " + package.ModelName());
  Line(out, "Hardware revisions", package.HwRevCount() == 0 ? "none listed" : package.HwRev());
  Line(out, "Devices", std::to_string(package.Devices()));
}

void WriteDevices(std::FILE* out, const QALclass& package) {
  ImageIndex images(package);
  for (std::int32_t device = 1; device <= package.Devices(); ++device) {
    std::fprintf(out, "    %d: ", device);
    Put(out, package.DeviceName(device));
    std::fprintf(out, ", address %d, record id ", package.DeviceAddress(device));
    Put(out, package.DeviceRecordID(device));
    std::fprintf(out, ", version %s", text::Fixed2(package.DeviceVersion(device)).c_str());
    if (!package.ErrorsFound()) {
      std::fprintf(out, ", %d words, %d of them padded", package.DeviceWords(device) + 1,
                   images.Of(device).padded);
    }
    std::fputc('\n', out);
  }
}

}  // namespace

std::string ShownPath(const QALclass& package) {
  const std::string path = package.RealFilename().string();
  return text::IsUtf8(path) ? path : text::ToUtf8(path);
}

void WriteText(std::FILE* out, const QALclass& package, const std::vector<QalRemark>& remarks) {
  std::fprintf(out, "%s\n", text::NamesForTerminal(package.RealFilename().string()).c_str());
  WriteHeader(out, package);
  WriteDevices(out, package);
  if (!package.ErrorsFound()) {
    std::fputs("  No errors\n", out);
  } else {
    std::fprintf(out, "  Error %d : %s at Line %d\n", package.LastError(), package.LastErrorMessage().c_str(),
                 package.LastErrorLine());
  }
  for (const QalRemark& remark : remarks) {
    std::fprintf(out, "  %s ", remark.Harmful ? "Harmful:" : "Remark:");
    if (remark.Line > 0) std::fprintf(out, "line %d: ", remark.Line);
    Put(out, remark.What);
    std::fputc('\n', out);
  }
}

void WriteImage(std::FILE* out, const QALclass& package, std::int32_t device) {
  const std::string text = IntelHexText(BytesOf(package.DeviceImage(device)));
  std::fwrite(text.data(), 1, text.size(), out);
}

}  // namespace tarnwick::qalinfo
