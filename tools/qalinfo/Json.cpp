#include <array>
#include <charconv>
#include <concepts>

#include "Images.h"
#include "Reports.h"
#include "platform/codepage.h"

namespace tarnwick::qalinfo {
namespace {

/// Writes one JSON value, member by member; commas come by themselves.
class JsonLine {
 public:
  explicit JsonLine(std::FILE* out) : mOut(out) {}

  void Open(char bracket) {
    Separate();
    std::fputc(bracket, mOut);
    mFirst = true;
  }
  void Close(char bracket) {
    std::fputc(bracket, mOut);
    mFirst = false;
  }
  void Key(std::string_view name) {
    Utf8(name);
    std::fputc(':', mOut);
    mFirst = true;
  }
  template <class Type>
  void Member(std::string_view name, const Type& value) {
    Key(name);
    Value(value);
  }
  void Value(std::same_as<bool> auto value) { Plain(value ? "true" : "false"); }
  void Value(std::int32_t value) { Plain(std::to_string(value)); }
  /// In as few digits as tell it from any other number.
  void Value(double value) {
    std::array<char, 64> digits;
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    Plain({digits.data(), result.ptr});
  }
  /// A text in Windows-1252.
  void Value(const std::string& value) {
    Separate();
    std::fputc('"', mOut);
    for (std::size_t at = 0; at < value.size(); at += kTextPart) {
      Escape(text::ToUtf8(std::string_view(value).substr(at, kTextPart)));
    }
    std::fputc('"', mOut);
  }
  void Utf8(std::string_view text) {
    Separate();
    std::fputc('"', mOut);
    Escape(text);
    std::fputc('"', mOut);
  }

 private:
  void Escape(std::string_view text);
  void Separate() {
    if (!mFirst) std::fputc(',', mOut);
    mFirst = false;
  }
  void Plain(std::string_view value) {
    Separate();
    std::fwrite(value.data(), 1, value.size(), mOut);
  }

  std::FILE* mOut;
  bool mFirst = true;
};

void JsonLine::Escape(std::string_view text) {
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      std::fprintf(mOut, "\\%c", c);
    } else if (static_cast<unsigned char>(c) < 0x20) {
      std::fprintf(mOut, "\\u%04x", static_cast<unsigned>(c));
    } else {
      std::fputc(c, mOut);
    }
  }
}

void WriteDevice(JsonLine& json, const QALclass& package, std::int32_t device, ImageIndex& images) {
  json.Open('{');
  json.Member("name", package.DeviceName(device));
  json.Member("address", package.DeviceAddress(device));
  json.Member("record_id", package.DeviceRecordID(device));
  json.Member("version", package.DeviceVersion(device));
  if (!package.ErrorsFound()) {
    char crc32[9];
    std::snprintf(crc32, sizeof crc32, "%08x", images.Crc32(device));
    json.Member("words", package.DeviceWords(device));
    json.Member("padded", images.Padded(device));
    json.Member("crc32", std::string(crc32));
  }
  json.Close('}');
}

}  // namespace

void WriteJson(std::FILE* out, const QALclass& package, const std::vector<QalRemark>& remarks) {
  JsonLine json(out);
  json.Open('{');
  json.Key("file");
  json.Utf8(ShownPath(package));
  json.Member("errors_found", package.ErrorsFound());
  json.Member("last_error", package.LastError());
  json.Member("last_error_message", package.LastErrorMessage());
  json.Member("last_error_line", package.LastErrorLine());
  json.Member("file_version", package.FileVersion());
  json.Member("filename", package.Filename());
  json.Member("file_date", package.FileDate());
  json.Member("comments", package.Comments());
  json.Member("model_number", package.ModelNumber());
  json.Member("model_name", package.ModelName());
  json.Member("hwrev", package.HwRev());
  json.Key("hwrev_values");
  json.Open('[');
  for (std::int32_t i = 1; i <= package.HwRevCount(); ++i) json.Value(package.HwRevValue(i));
  json.Close(']');
  json.Key("devices");
  json.Open('[');
  ImageIndex images(package);
  for (std::int32_t device = 1; device <= package.Devices(); ++device) {
    WriteDevice(json, package, device, images);
  }
  json.Close(']');
  json.Key("remarks");
  json.Open('[');
  for (const QalRemark& remark : remarks) {
    json.Open('{');
    json.Member("line", remark.Line);
    json.Member("harmful", remark.Harmful);
    json.Member("what", remark.What);
    json.Close('}');
  }
  json.Close(']');
  json.Close('}');
  std::fputc('\n', out);
}

}  // namespace tarnwick::qalinfo
