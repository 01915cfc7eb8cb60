#include "Images.h"
#include "Reports.h"
#include "platform/json.h"

namespace tarnwick::qalinfo {
namespace {

void WriteDevice(JsonLine& json, const QALclass& package, std::int32_t device, ImageIndex& images) {
  json.Open('{');
  json.Member("name", package.DeviceName(device));
  json.Member("address", package.DeviceAddress(device));
  json.Member("record_id", package.DeviceRecordID(device));
  json.Member("version", package.DeviceVersion(device));
  if (!package.ErrorsFound()) {
    const ImageIndex::Told told = images.Of(device);
    char crc32[9];
    std::snprintf(crc32, sizeof crc32, "%08x", told.crc32);
    json.Member("words", package.DeviceWords(device));
    json.Member("padded", told.padded);
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
