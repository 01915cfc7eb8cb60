#include "QalParser.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "Fields.h"
#include "platform/text.h"

namespace tarnwick {
namespace {

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

std::size_t QalParser::ReadLines(std::string_view text) {
  std::string_view rest = text;
  std::string_view line;
  while (!Failed()) {
    if (const std::size_t length = mHexLine.ParseGoodLine(rest); length > 0) {
      rest.remove_prefix(length);
      CountLine();
      StoreRecord();
    } else if (text::NextLine(rest, line)) {
      CountLine();
      ReadLine(line);
    } else {
      break;
    }
  }
  return text.size() - rest.size();
}

void QalParser::Finish() {
  MeasureDevices();
  if (!Failed()) RequireData();
  if (!Failed()) PadDevices();
}

void QalParser::CountLine() {
  if (mPackage.LineCounter < std::numeric_limits<std::int32_t>::max()) ++mPackage.LineCounter;
}

/// Any line but a good record.
void QalParser::ReadLine(std::string_view line) {
  if (line.find('=') != std::string_view::npos) {
    ReadKeyLine(line);
  } else if (line.starts_with(':')) {
    mPackage.SetError(mHexLine.ParseHexLine(line));
  }
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
    mPackage.HwRev = QalRevisions(std::move(value));
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

void QalParser::DeclareDevice(std::string_view value) {
  QalDevice device;
  device.Name = text::Trim(TakeField(value));
  device.Address = WholeNumber(TakeField(value));
  const std::string_view recordId = TakeField(value);
  device.Version = VersionOf(recordId);
  device.Data = ImageOf(text::Upper(text::Trim(recordId)));
  QalImage& image = mPackage.Images[device.Data];
  if (image.Twin == 0) image.Twin = DeviceCount() + 1;
  device.Twin = image.Twin;
  mPackage.Devices.Add() = std::move(device);
}

/// The image for a record id; a new one when no device declared it before.
std::uint32_t QalParser::ImageOf(std::string recordId) {
  if (const auto image = mImageOf.find(recordId); image != mImageOf.end()) return image->second;
  const auto number = static_cast<std::uint32_t>(mPackage.Images.size());
  QalImage& image = mPackage.Images.Add();
  image.RecordID = std::move(recordId);
  mImageOf.emplace(image.RecordID, number);
  if (image.RecordID == mRecordID) mImage = number;
  return number;
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
  if (mImage == kNone || mHexLine.EndOfFile()) return;
  const std::int32_t devices = DeviceCount();
  mPackage.Images[mImage].Twin = 0;
  const std::size_t first = mHexLine.FirstWord();
  const std::size_t end = first + mHexLine.WordCount();
  for (std::size_t word = first; word < end;) {
    QalRun& run = mPackage.Images.Touch(mImage, word);
    const std::size_t place = word % QalRun::kWords;
    const std::size_t count = std::min(end - word, QalRun::kWords - place);
    std::fill_n(&run.Devices[place], count, devices);
    mHexLine.CopyWords(word - first, count, &run.Words[place]);
    word += count;
  }
}

/// Gives each device its highest word. Of two devices of one image the later one has the same words
/// or fewer, so the ends only ever move down: one walk over the images serves all devices.
void QalParser::MeasureDevices() {
  std::vector<std::size_t> tops(mPackage.Images.size());
  for (std::size_t image = 0; image < tops.size(); ++image) tops[image] = mPackage.Images.Span(image);
  for (std::int32_t number = 1; number <= DeviceCount(); ++number) {
    QalDevice& device = mPackage.Device(number);
    std::size_t& top = tops[device.Data];
    top = mPackage.Images.LastWord(device.Data, top, number);
    device.Words = static_cast<std::int32_t>(top);
  }
}

void QalParser::RequireData() {
  for (std::int32_t number = 1; number <= DeviceCount(); ++number) {
    if (mPackage.Device(number).Words == 0) return mPackage.SetError(QalError::NoDataForDevice);
  }
}

/// Rounds each image up to whole groups. A record gives both bytes of a word or none, so filling
/// the words without a value is no more than showing the filler for them.
void QalParser::PadDevices() {
  for (std::int32_t number = 1; number <= DeviceCount(); ++number) {
    std::int32_t& words = mPackage.Device(number).Words;
    words = (words / kGroup + 1) * kGroup - 1;
  }
  mPackage.Padded = true;
}

}  // namespace tarnwick
