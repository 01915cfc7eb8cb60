#include "QalParser.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "platform/text.h"

namespace tarnwick {
namespace {

/// Room added behind a word that lies beyond the end of its image.
constexpr std::size_t kGrowth = 1000;
/// Images are sent and padded in groups of so many words.
constexpr std::int32_t kGroup = 4;

/// Where the value of a key goes that is kept as it stands; null for any other key.
std::string QalPackage::*TextField(std::string_view key) {
  if (key == "FILENAME") return &QalPackage::Filename;
  if (key == "FILEDATE") return &QalPackage::FileDate;
  if (key == "COMMENTS") return &QalPackage::Comments;
  if (key == "MODELNAME") return &QalPackage::ModelName;
  return nullptr;
}

std::int32_t WholeNumber(std::string_view text) {
  return text::ToInt32(text::NumericPrefix(text));
}

/// Takes the text before the first comma off `rest`, the comma too; all of it when there is none.
std::string_view TakeField(std::string_view& rest) {
  const std::size_t length = std::min(rest.find(','), rest.size());
  const std::string_view field = rest.substr(0, length);
  rest.remove_prefix(std::min(length + 1, rest.size()));
  return field;
}

/// The version that the last four characters of a record id tell: two of the whole part, two of the
/// hundredths. A shorter one gives what it has.
double VersionOf(std::string_view recordId) {
  const auto last = [](std::string_view text, std::size_t count) {
    return text.substr(text.size() - std::min(count, text.size()));
  };
  const std::string_view tail = last(recordId, 4);
  return text::NumericPrefix(tail.substr(0, 2)) + text::NumericPrefix(last(tail, 2)) / 100.0;
}

}  // namespace

void QalParser::Parse(std::string_view text) {
  std::string_view line;
  while (!Failed() && text::NextLine(text, line)) {
    if (mPackage.LineCounter < std::numeric_limits<std::int32_t>::max()) ++mPackage.LineCounter;
    ReadLine(line);
  }
  MeasureDevices();
  if (!Failed()) RequireData();
  if (!Failed()) PadDevices();
}

void QalParser::ReadLine(std::string_view line) {
  // A "=" anywhere makes a key line, but a good record holds none: it is looked for in the others.
  if (line.starts_with(':')) {
    const QalError error = mHexLine.ParseHexLine(line);
    if (error == QalError::None) return StoreRecord();
    if (line.find('=') == std::string_view::npos) return mPackage.SetError(error);
  }
  if (line.find('=') != std::string_view::npos) ReadKeyLine(line);
}

void QalParser::ReadKeyLine(std::string_view line) {
  auto [key, value] = text::SplitKeyValue(line);
  if (const auto field = TextField(key)) {
    mPackage.*field = std::move(value);
  } else if (key == "FILEVER") {
    ReadFileVersion(value);
  } else if (key == "MODELNUMBER") {
    mPackage.ModelNumber = WholeNumber(value);
  } else if (key == "HWREV") {
    ReadHwRev(std::move(value));
  } else if (key == "DEVICE_ADDRESS_VERSION") {
    DeclareDevice(value);
  } else if (key == "START_HEX" || key == "V3_START_HEX") {
    OpenBlock(value);
  } else if (key == "END_HEX" || key == "V3_END_HEX") {
    CloseBlock(value);
  }
}

void QalParser::ReadFileVersion(std::string_view value) {
  if (value.empty()) return;
  mPackage.FileVersion =
      text::NumericPrefix(value.substr(1, 1)) / 10.0 + text::NumericPrefix(value.substr(0, 1));
}

void QalParser::ReadHwRev(std::string value) {
  mPackage.HwRev = std::move(value);
  mPackage.HwRevValues.clear();
  if (mPackage.HwRev.empty()) return;
  const auto commas = std::count(mPackage.HwRev.begin(), mPackage.HwRev.end(), ',');
  mPackage.HwRevValues.resize(static_cast<std::size_t>(commas) + 1);
  std::string_view rest = mPackage.HwRev;
  for (std::int32_t& revision : mPackage.HwRevValues) revision = WholeNumber(TakeField(rest));
}

void QalParser::DeclareDevice(std::string_view value) {
  QalDevice device;
  device.Name = text::Trim(TakeField(value));
  device.Address = WholeNumber(TakeField(value));
  const std::string_view recordId = TakeField(value);
  device.RecordID = text::Upper(text::Trim(recordId));
  device.Version = VersionOf(recordId);

  const auto [image, isNew] = mImageOf.try_emplace(device.RecordID, mPackage.Images.size());
  if (isNew) mPackage.Images.emplace_back();
  device.Data = image->second;
  if (device.RecordID == mRecordID) mImage = device.Data;
  mPackage.Devices.push_back(std::move(device));
}

void QalParser::OpenBlock(std::string_view value) {
  mRecordID = text::Upper(value);
  const auto image = mImageOf.find(mRecordID);
  mImage = image != mImageOf.end() ? image->second : kNone;
}

void QalParser::CloseBlock(std::string_view value) {
  if (text::Upper(value) != mRecordID) return mPackage.SetError(QalError::NoMatchingEnd);
  OpenBlock({});
}

void QalParser::StoreRecord() {
  const std::size_t count = mHexLine.WordCount();
  if (mImage == kNone || count == 0 || mHexLine.EndOfFile()) return;

  QalImage& image = mPackage.Images[mImage];
  const std::size_t first = mHexLine.FirstWord();
  if (first + count > image.size()) image.resize(first + count + kGrowth);
  const auto devices = static_cast<std::int32_t>(mPackage.Devices.size());
  for (std::size_t i = 0; i < count; ++i)
    image[first + i] = {devices, mHexLine.LoByte(i), mHexLine.HiByte(i)};
}

/// Gives each device its highest word. Of two devices of one image the later one has the same words
/// or fewer, so the ends only ever move down: one walk over the images serves all devices.
void QalParser::MeasureDevices() {
  std::vector<std::size_t> tops(mPackage.Images.size());
  for (std::size_t i = 0; i < tops.size(); ++i)
    tops[i] = std::max<std::size_t>(mPackage.Images[i].size(), 1) - 1;
  std::int32_t number = 0;
  for (QalDevice& device : mPackage.Devices) {
    ++number;
    std::size_t& top = tops[device.Data];
    while (top > 0 && mPackage.Images[device.Data][top].Devices < number) --top;
    device.Words = static_cast<std::int32_t>(top);
  }
}

void QalParser::RequireData() {
  for (const QalDevice& device : mPackage.Devices) {
    if (device.Words == 0) return mPackage.SetError(QalError::NoDataForDevice);
  }
}

/// Rounds each image up to whole groups. A record gives both bytes of a word or none, so filling
/// the words without a value is no more than showing the filler for them.
void QalParser::PadDevices() {
  for (QalDevice& device : mPackage.Devices) device.Words = (device.Words / kGroup + 1) * kGroup - 1;
  mPackage.Padded = true;
}

}  // namespace tarnwick
