// A second reader of firmware packages, written from docs/package-format.md for plainness alone: what
// the loader reads fast is held against what this one reads slowly. It calls nothing of the product's; only
// `PictureOf` and `Agreed` do, which look at the loader.
#pragma once

#include <cmath>
#include <cstdlib>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "firmware/QALclass.h"

namespace tarnwick::test {

struct PlainWord {
  std::optional<std::uint8_t> lo, hi;
  bool padded = false;
  bool operator==(const PlainWord&) const = default;
};

struct PlainDevice {
  std::string name;
  std::int32_t address = 0;
  std::string recordId;
  double version = 0;
  std::vector<PlainWord> words = std::vector<PlainWord>(1);  ///< Up to the highest one written.
  bool operator==(const PlainDevice&) const = default;
};

/// All that a load tells of a package.
struct PlainPackage {
  std::int32_t error = 0, errorLine = 0, modelNumber = 0;
  double fileVersion = 0;
  std::map<std::string, std::string> texts = {};  ///< By the key.
  std::vector<std::int32_t> revisions = {};
  std::vector<PlainDevice> devices = {};
  bool operator==(const PlainPackage&) const = default;
};

/// What a load left in `package`.
inline PlainPackage PictureOf(const QALclass& package) {
  PlainPackage picture{package.LastError(), package.LastErrorLine(), package.ModelNumber(),
                       package.FileVersion()};
  picture.texts = {{"FILENAME", package.Filename()},
                   {"FILEDATE", package.FileDate()},
                   {"COMMENTS", package.Comments()},
                   {"MODELNAME", package.ModelName()},
                   {"HWREV", package.HwRev()}};
  for (std::int32_t i = 1; i <= package.HwRevCount(); ++i) picture.revisions.push_back(package.HwRevValue(i));
  for (std::int32_t i = 1; i <= package.Devices(); ++i) {
    picture.devices.push_back({package.DeviceName(i), package.DeviceAddress(i), package.DeviceRecordID(i)});
    picture.devices.back().version = package.DeviceVersion(i);
    picture.devices.back().words.clear();
    for (std::int32_t word = 0; word <= package.DeviceWords(i); ++word) {
      picture.devices.back().words.push_back(
          {package.DeviceLoByte(i, word), package.DeviceHiByte(i, word), package.DeviceNullPadded(i, word)});
    }
  }
  return picture;
}

class PlainReader {
 public:
  static PlainPackage Read(const std::string& text) {
    PlainReader reader;
    std::size_t at = 0;
    for (std::size_t end; reader.Good() && (end = text.find("\r\n", at)) != text.npos; at = end + 2) {
      ++reader.mLine;
      reader.Line(text.substr(at, end - at));
    }
    for (const PlainDevice& device : reader.mIs.devices) {
      if (reader.Good() && device.words.size() == 1) reader.Error(7);
    }
    for (std::size_t i = 0; reader.Good() && i < reader.mIs.devices.size(); ++i) {
      std::vector<PlainWord>& words = reader.mIs.devices[i].words;
      words.resize((words.size() + 3) / 4 * 4);
      for (PlainWord& word : words) word = word.lo ? word : PlainWord{0xFF, 0x3F, true};
    }
    const std::string hwRev = reader.mIs.texts["HWREV"];
    const auto fields = hwRev.empty() ? std::vector<std::string>() : Fields(hwRev);
    for (const auto& field : fields) reader.mIs.revisions.push_back(Whole(field));
    return reader.mIs;
  }

 private:
  bool Good() const { return mIs.error == 0; }
  void Error(std::int32_t number) { mIs.error = number, mIs.errorLine = mLine; }

  void Line(std::string line) {
    const std::size_t equals = line.find('=');
    if (equals == line.npos) return line.starts_with(':') ? HexLine(line) : void();
    for (char& c : line) c = c == '\r' || c == '\n' || c == '\t' ? ' ' : c;
    Key(Upper(Cut(line.substr(0, equals))), Cut(line.substr(equals + 1)));
  }

  void Key(const std::string& key, const std::string& value) {
    if (mIs.texts.contains(key)) mIs.texts[key] = value;
    if (key == "MODELNUMBER") mIs.modelNumber = Whole(value);
    if (key == "FILEVER" && !value.empty()) {
      mIs.fileVersion = Number(value.substr(1, 1)) / 10 + Number(value.substr(0, 1));
    }
    if (key == "DEVICE_ADDRESS_VERSION") {
      auto fields = Fields(value);
      fields.resize(3);
      const std::string id = fields[2], tail = Last(id, 4);
      mIs.devices.push_back({Cut(fields[0]), Whole(fields[1]), Upper(Cut(id)),
                             Number(tail.substr(0, 2)) + Number(Last(tail, 2)) / 100});
    }
    if (key == "START_HEX" || key == "V3_START_HEX") mRecordId = Upper(value);
    if (key == "END_HEX" || key == "V3_END_HEX") {
      if (Upper(value) != mRecordId) return Error(8);
      mRecordId.clear();
    }
  }

  void HexLine(const std::string& line) {
    if (line.size() < 11) return Error(2);
    const std::size_t count = Hex(line, 1);
    if (2 * count != line.size() - 11) return Error(3);
    std::size_t sum = 0;
    for (std::size_t at = 1; at < line.size() - 2; at += 2) sum += Hex(line, at);
    if (Hex(line, line.size() - 2) != (256 - sum % 256) % 256) return Error(4);
    const std::size_t first = (Hex(line, 3) * 256 + Hex(line, 5)) / 2, type = Hex(line, 7);
    if (!Good() || type == 1) return;
    if (type != 0) return Error(5);
    for (PlainDevice& device : mIs.devices) {
      for (std::size_t k = 0; k < count / 2 && device.recordId == mRecordId; ++k) {
        if (first + k >= device.words.size()) device.words.resize(first + k + 1);
        device.words[first + k] = {Hex(line, 9 + 4 * k), Hex(line, 11 + 4 * k)};
      }
    }
  }

  /// The byte whose two digits stand at `at`.
  std::uint8_t Hex(const std::string& line, std::size_t at) {
    std::size_t value = 0;
    for (const char digit : {line[at], line[at + 1]}) {
      const std::size_t place = std::string_view("0123456789ABCDEFabcdef").find(digit);
      if (place == std::string_view::npos) Error(6);
      value = value * 16 + (place > 21 ? 0 : place > 15 ? place - 6 : place);
    }
    return static_cast<std::uint8_t>(value);
  }

  static double Number(const std::string& text) {
    std::size_t at = 0, digits = 0, end;
    while (at < text.size() && text[at] == ' ') ++at;
    for (end = at; end < text.size(); ++end) {
      const bool point = text[end] == '.' && text.find('.', at) == end;
      const bool sign = end == at && (text[end] == '-' || text[end] == '+');
      if (text[end] >= '0' && text[end] <= '9')
        ++digits;
      else if (!point && !sign)
        break;
    }
    const double value = digits == 0 ? 0 : std::strtod(text.substr(at, end - at).c_str(), nullptr);
    return std::min(std::max(value, std::numeric_limits<double>::lowest()),
                    std::numeric_limits<double>::max());
  }
  static std::int32_t Whole(const std::string& text) {
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min(), most = -(least + 1);
    return static_cast<std::int32_t>(
        std::min<double>(std::max<double>(std::rint(Number(text)), least), most));
  }
  static std::string Cut(const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    return first == text.npos ? "" : text.substr(first, text.find_last_not_of(' ') + 1 - first);
  }
  static std::string Upper(std::string text) {
    const std::string small = "\x9A\x9C\x9E\xFF", large = "\x8A\x8C\x8E\x9F";
    for (char& c : text) {
      const auto byte = static_cast<unsigned char>(c);
      const bool letter = (c >= 'a' && c <= 'z') || (byte >= 0xE0 && byte != 0xF7 && byte != 0xFF);
      if (letter)
        c = static_cast<char>(byte - 0x20);
      else if (const std::size_t at = small.find(c); at != small.npos)
        c = large[at];
    }
    return text;
  }
  static std::vector<std::string> Fields(const std::string& text) {
    std::vector<std::string> fields(1);
    for (const char c : text) c == ',' ? fields.emplace_back() : fields.back().append(1, c);
    return fields;
  }
  static std::string Last(const std::string& text, std::size_t count) {
    return text.substr(text.size() - std::min(count, text.size()));
  }

  PlainPackage mIs{
      .texts = {{"FILENAME", ""}, {"FILEDATE", ""}, {"COMMENTS", ""}, {"MODELNAME", ""}, {"HWREV", ""}}};
  std::string mRecordId;
  std::int32_t mLine = 0;
};

/// The error number that both readers give for `text`, if they make the same of it.
inline std::optional<std::int32_t> Agreed(const std::string& text) {
  QALclass package;
  if (!text.empty()) package.LoadQALfile({}, text);
  const PlainPackage picture = PictureOf(package);
  if (picture != PlainReader::Read(text)) return std::nullopt;
  for (std::int32_t i = 1; !package.ErrorsFound() && i <= package.Devices(); ++i) {
    const auto& words = picture.devices[static_cast<std::size_t>(i - 1)].words;
    const auto& twin = picture.devices[static_cast<std::size_t>(package.DeviceTwin(i) - 1)].words;
    QalDeviceImage image = package.DeviceImage(i);
    for (const PlainWord& word : words) image.NullPadded -= word.padded;
    const bool same = std::equal(words.begin(), words.end(), image.Words.begin(), image.Words.end(),
                                 [](auto& a, auto& b) { return a.lo == b.LoByte && a.hi == b.HiByte; });
    if (!same || words != twin || image.NullPadded != 0) return std::nullopt;
  }
  return picture.error;
}

/// Gives each hex line the checksum of what stands in it.
inline void RepairCheckSums(std::string& text) {
  for (std::size_t at = 0, end; (end = text.find("\r\n", at)) != text.npos; at = end + 2) {
    if (text[at] != ':' || end - at < 11) continue;
    std::int32_t sum = 0;
    for (std::size_t i = at + 1; i < end - 2; i += 2)
      sum -= static_cast<std::int32_t>(std::strtol(text.substr(i, 2).c_str(), nullptr, 16));
    for (const int shift : {4, 0}) text[end - (shift == 4 ? 2 : 1)] = "0123456789ABCDEF"[sum >> shift & 15];
  }
}

}  // namespace tarnwick::test
