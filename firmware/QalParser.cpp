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
  if (mLongLine.Begun() && !TakeLongLine(rest)) return text.size() - rest.size();
  while (!Failed()) {
    if (const std::size_t length = mHexLine.ParseGoodLine(rest); length > 0) {
      rest.remove_prefix(length);
      CountLine();
      StoreRecord();
    } else if (text::NextLine(rest, line)) {
      CountLine();
      ReadLine(line);
    } else {
      if (rest.size() > LongLine::kFrom) TakeLongLine(rest);
      break;
    }
  }
  return text.size() - rest.size();
}

/// Takes what belongs to a long line off `rest`. True when the line has ended there.
bool QalParser::TakeLongLine(std::string_view& rest) {
  const std::size_t end = rest.find(text::kLineEnd);
  const bool ended = end != std::string_view::npos;
  // The other half of a line end may be in the next piece.
  const std::size_t length = ended ? end : rest.size() - (rest.ends_with('\r') ? 1 : 0);
  mLongLine.Add(rest.substr(0, length));
  rest.remove_prefix(length + (ended ? text::kLineEnd.size() : 0));
  if (!ended) return false;
  CountLine();
  if (mLongLine.IsRecord()) mPackage.SetError(QalError::HexWrongLength);
  if (auto line = mLongLine.Take(); !line.key.empty()) ReadKeyLine(std::move(line));
  return true;
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
    ReadKeyLine(text::SplitKeyValue(line));
  } else if (line.starts_with(':')) {
    mPackage.SetError(mHexLine.ParseHexLine(line));
  }
}

void QalParser::ReadKeyLine(text::KeyValue line) {
  auto& [key, value] = line;
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
  device.Name = mPackage.Texts.Add(text::Trim(TakeField(value)));
  device.Address = WholeNumber(TakeField(value));
  const std::string_view recordId = TakeField(value);
  device.Version = VersionOf(recordId);
  device.Data = ImageOf(text::Upper(text::Trim(recordId)));
  mPackage.Devices.Add() = device;
  mPackage.Images[device.Data].LastDevice = DeviceCount();
}

/// The image for a record id; a new one when no device declared it before.
std::uint32_t QalParser::ImageOf(const std::string& recordId) {
  if (const auto image = mIds.Find(recordId)) return *image;
  const auto number = static_cast<std::uint32_t>(mPackage.Images.size());
  mPackage.Images.Add().RecordID = mPackage.Texts.Add(recordId);
  mIds.Add(number);
  if (recordId == mRecordID) mImage = number;
  return number;
}

void QalParser::OpenBlock(std::string_view value) {
  mRecordID = text::Upper(value);
  mImage = mIds.Find(mRecordID).value_or(kNone);
}

void QalParser::CloseBlock(std::string_view value) {
  if (text::Upper(value) != mRecordID) return mPackage.SetError(QalError::NoMatchingEnd);
  OpenBlock({});
}

void QalParser::StoreRecord() {
  if (mImage == kNone || mHexLine.EndOfFile()) return;
  const std::int32_t devices = mPackage.Images[mImage].LastDevice;
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

/// Gives each device its highest word, and the first device that has the same ones. Of two devices of one
/// image the later one has the same words or fewer, so the ends only ever move down: one walk over the images
/// serves all devices.
void QalParser::MeasureDevices() {
  mIds = QalIds(mPackage.Images);  // Needed no more.
  std::vector<bool> isLast(mPackage.Devices.size() + 1);
  mPackage.Images.MarkLast(isLast);
  struct Walk {
    std::uint32_t top;
    std::int32_t last;  ///< The image's device before.
  };
  std::vector<Walk> walks(mPackage.Images.size());
  for (std::size_t i = 0; i < walks.size(); ++i)
    walks[i] = {static_cast<std::uint32_t>(mPackage.Images.Span(i)), 0};
  for (std::int32_t number = 1; number <= DeviceCount(); ++number) {
    QalDevice& device = mPackage.Device(number);
    auto& [top, last] = walks[device.Data];
    const bool same = last != 0 && !isLast[static_cast<std::size_t>(last)];
    device.Twin = same ? mPackage.Device(last).Twin : number;
    if (!same) top = static_cast<std::uint32_t>(mPackage.Images.LastWord(device.Data, top, number));
    device.Words = static_cast<std::int32_t>(top);
    last = number;
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
