#include "firmware/QalLint.h"

#include <algorithm>

#include <set>

#include "Fields.h"
#include "HexLine.h"
#include "firmware/SignatureLine.h"
#include "platform/codepage.h"
#include "platform/pieces.h"
#include "platform/text.h"

namespace tarnwick {
namespace {

/// Of a line so many bytes are looked at: more than any has that means something, but for long comments.
constexpr std::size_t kKept = 4096;
/// Of a value so many characters are told.
constexpr std::size_t kQuoted = 40;
/// Of record ids so many are kept apart; beyond them nobody is told that a block is not declared.
constexpr std::size_t kMostIds = 10'000;
constexpr std::int32_t kLowestAddress = 16;
constexpr std::int32_t kHighestAddress = 19;
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

std::string Quoted(std::string_view value) {
  std::string text = "\"";
  text.append(value.substr(0, kQuoted)).append(value.size() > kQuoted ? "...\"" : "\"");
  return text;
}

bool IsDigits(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// The key of a block without the mark of the third version.
std::string_view BlockKey(std::string_view key) {
  return key.starts_with("V3_") && key.ends_with("_HEX") ? key.substr(3) : key;
}

std::string Device(const QALclass& package, std::int32_t device) {
  return "device " + std::to_string(device) + " (" + package.DeviceName(device) + ")";
}

}  // namespace

struct QalLint::State {
  std::string fileName;
  std::vector<QalRemark> remarks;
  bool more = false;

  std::string part;  ///< What came of a line that has not ended yet, up to `kKept` bytes.
  bool lastCr = false;
  bool empty = true;  ///< Nothing came yet.
  bool nul = false;   ///< Bytes that are 0 came and are not told yet.
  std::int32_t line = 0;
  std::int32_t partEnds = 0;  ///< Line ends of LF alone in `part`.
  std::int32_t otherEnds = 0;
  std::int32_t otherEndsLine = 0;

  std::set<std::string> declared;  ///< Record ids with a device.
  std::set<std::string> filled;    ///< Record ids whose block had records.
  std::set<std::int32_t> addresses;
  std::vector<std::int32_t> deviceLines;
  std::int32_t modelLine = 0;
  bool model = false;
  std::string block;  ///< Record id of the open block; empty outside one.
  std::int32_t blockLine = 0;
  bool blockTold = false;  ///< That nobody gets the records of this block, or of this stretch outside one.

  void Say(std::int32_t at, bool harmful, std::string what) {
    if (more) {
      remarks.back().Harmful |= harmful;
    } else {
      more = remarks.size() + 1 == kMostRemarks;
      remarks.push_back({at, harmful, more ? "there is more to say" : std::move(what)});
    }
  }
  void Say(bool harmful, std::string what) { Say(line, harmful, std::move(what)); }

  void Keep(std::string_view piece);
  void EndLine(std::string_view text);
  void FirstLine(std::string_view& text);
  void TakeKey(std::string_view text);
  void TakeNumbers(std::string_view key, std::string_view value);
  void TakeDevice(std::string_view value);
  void TakeRecord(std::string_view text);
  void TakeOther(std::string_view text);
  void CloseBlock();
  void End();
  void Whole(const QALclass& package);
};

void QalLint::State::Keep(std::string_view piece) {
  if (piece.empty()) return;
  part.append(piece.substr(0, kKept - std::min(kKept, part.size())));
  lastCr = piece.back() == '\r';
}

/// `text` is a whole line, or the begin of a long one.
void QalLint::State::EndLine(std::string_view text) {
  ++line;
  if (line == 1) FirstLine(text);
  std::int32_t inside = partEnds;
  if (text.find('\r') != std::string_view::npos)  // Seldom, and looked for faster than counted.
    inside += static_cast<std::int32_t>(std::count(text.begin(), text.end(), '\r'));
  if (inside > 0 && otherEnds == 0) otherEndsLine = line;
  otherEnds += inside;
  partEnds = 0;
  if (nul && text.find('\0') != std::string_view::npos) {
    Say(true, "bytes of 0: text of another kind, such as UTF-16, is not read");
    nul = false;
  }
  if (text.find('=') != std::string_view::npos) {
    TakeKey(text);
  } else if (text.starts_with(':')) {
    TakeRecord(text);
  } else {
    TakeOther(text);
  }
}

void QalLint::State::FirstLine(std::string_view& text) {
  if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) {
    Say(true, "the file is UTF-16, of which nothing is read; a package is text in Windows-1252");
    nul = false;
  } else if (text.starts_with(kUtf8Mark)) {
    Say(true, "the file begins with a byte order mark, which spoils the first line");
    text.remove_prefix(kUtf8Mark.size());
  }
}

void QalLint::State::TakeKey(std::string_view text) {
  if (text.starts_with(';')) return;
  const auto [key, value] = text::SplitKeyValue(text);
  const bool high = std::any_of(value.begin(), value.end(), [](char c) { return (c & 0x80) != 0; });
  if (high && text::IsUtf8(value))
    Say(false, key + " holds UTF-8, which is shown as Windows-1252: as other letters");
  const std::string_view kind = BlockKey(key);
  if (kind == "DEVICE_ADDRESS_VERSION") {
    TakeDevice(value);
  } else if (kind == "START_HEX") {
    CloseBlock();
    block = text::Upper(value);
    blockLine = line;
    blockTold = false;
  } else if (kind == "END_HEX") {
    block.clear();
    blockTold = false;
  } else if (key == "FILENAME") {
    if (!text::EqualNoCase(value, fileName))
      Say(false, "FILENAME is " + Quoted(value) + ", the file's name is " + Quoted(fileName));
  } else if (key == "FILEVER" || key == "MODELNUMBER" || key == "HWREV") {
    TakeNumbers(key, value);
  } else if (key != "FILEDATE" && key != "COMMENTS" && key != "MODELNAME") {
    Say(false, "the key " + Quoted(key) + " is not known, and passed over");
  }
}

void QalLint::State::TakeNumbers(std::string_view key, std::string_view value) {
  if (key == "FILEVER") {
    if (value.size() != 2 || !IsDigits(value)) Say(false, "FILEVER " + Quoted(value) + " is not two digits");
  } else if (key == "MODELNUMBER") {
    model = WholeNumber(value) != 0;
    modelLine = line;
    if (model && !IsDigits(value)) Say(true, "MODELNUMBER " + Quoted(value) + " is not all digits");
  } else {
    const auto fields = text::Split(value, ',');
    const auto isNumber = [](std::string_view field) { return IsDigits(text::Trim(field)); };
    if (!value.empty() && !std::all_of(fields.begin(), fields.end(), isNumber))
      Say(true, "HWREV " + Quoted(value) + " is no list of numbers");
  }
}

void QalLint::State::TakeDevice(std::string_view value) {
  if (deviceLines.size() < kMostIds) deviceLines.push_back(line);
  TakeField(value);
  const std::string_view number = text::Trim(TakeField(value));
  const std::string_view field = TakeField(value);
  const std::string id = text::Upper(text::Trim(field));
  const std::int32_t address = WholeNumber(number);
  if (!IsDigits(number) || address < kLowestAddress || address > kHighestAddress)
    Say(true, "no mount has a device at the address " + Quoted(number) + "; they are 16 to 19");
  else if (!addresses.insert(address).second)
    Say(true, "another device above has the address " + Quoted(number) + ": this one is never used");
  const std::string_view version = field.substr(field.size() - std::min<std::size_t>(4, field.size()));
  if (version.size() != 4 || !IsDigits(version))
    Say(false,
        "the record id " + Quoted(text::Trim(field)) + " does not end in the four digits of a version");
  if (filled.contains(id)) Say(true, "the device is declared below records of its own: it does not get them");
  if (declared.size() < kMostIds) declared.insert(id);
}

void QalLint::State::TakeRecord(std::string_view text) {
  if (text.size() < 9) return;  // An error of the loader, which tells it.
  const auto digit = [text](std::size_t at) { return kHexDigits[static_cast<unsigned char>(text[at])]; };
  const auto length = static_cast<unsigned>((digit(1) << 4 | digit(2)) & 0xFF);
  if (length == 0 || text.substr(7, 2) != "00") return;
  if ((digit(6) & 1) != 0) Say(true, "the record begins at an odd address, and loses its lowest bit");
  if (length % 2 != 0) Say(true, "the record has an odd number of bytes: the last one is lost");
  if (blockTold) return;
  blockTold = true;
  if (filled.size() < kMostIds) filled.insert(block);
  if (declared.contains(block) || declared.size() == kMostIds) return;
  if (block.empty()) {
    Say(true, "records outside of any block go to no device");
  } else {
    Say(blockLine, true, "no device above has the record id " + Quoted(block) + ": its records are lost");
  }
}

/// A line that the format passes over.
void QalLint::State::TakeOther(std::string_view text) {
  const std::string seen = text::CleanLine(text);
  if (seen.empty() || seen.front() == ';' || text.front() == ';') return;
  if (seen.find(':') != std::string::npos)
    Say(true, "a record with something in front of its colon is passed over: its words are lost");
  else
    Say(false, "the line is passed over, and no comment: " + Quoted(seen));
}

void QalLint::State::CloseBlock() {
  if (!block.empty())
    Say(blockLine, true, "the block " + Quoted(block) + " is left open: END_HEX is missing");
}

/// What stands behind the last line end.
void QalLint::State::End() {
  if (part.empty() || !TakeSignature(part).signature.empty()) return;
  ++line;
  if (line == 1) {
    std::string_view text = part;
    FirstLine(text);
  }
  if (nul && part.find('\0') != std::string::npos) Say(true, "bytes of 0: is this text in UTF-16?");
  if (otherEnds == 0) otherEndsLine = line;
  otherEnds += partEnds + static_cast<std::int32_t>(std::count(part.begin(), part.end(), '\r'));
  Say(true, "what stands behind the last CR LF is not read: " + Quoted(text::CleanLine(part)));
}

void QalLint::State::Whole(const QALclass& package) {
  CloseBlock();
  End();
  if (empty) Say(0, true, "the file is empty");
  if (otherEnds > 0)
    Say(otherEndsLine, true,
        std::to_string(otherEnds) +
            " line ends of another system, the first of them here: CR LF alone ends a line");
  if (!model)
    Say(modelLine, true, modelLine == 0 ? "no MODELNUMBER" : "the MODELNUMBER 0 is that of no mount");
  if (deviceLines.empty()) Say(0, true, "no device is declared");
  for (std::int32_t i = 1; !package.ErrorsFound() && i <= package.Devices() && !more; ++i) {
    if (package.DeviceTwin(i) != i || static_cast<std::size_t>(i) > deviceLines.size()) continue;
    std::int32_t padded = 0, first = -1, top = package.DeviceWords(i);
    while (top > 0 && package.DeviceNullPadded(i, top)) --top;
    if (package.DeviceImage(i).NullPadded == package.DeviceWords(i) - top) continue;
    for (std::int32_t word = top; word >= 0; --word) {
      if (!package.DeviceNullPadded(i, word)) continue;
      ++padded;
      first = word;
    }
    Say(deviceLines[static_cast<std::size_t>(i) - 1], false,
        std::to_string(padded) + " words inside the image of " + Device(package, i) +
            " are given by no record, the first of them word " + std::to_string(first) + ": they are padded");
  }
  std::stable_sort(remarks.begin(), remarks.end(), [](auto& a, auto& b) { return a.Line < b.Line; });
}

QalLint::QalLint(std::string fileName) : mState(std::make_unique<State>()) {
  mState->fileName = std::move(fileName);
}

QalLint::~QalLint() = default;

void QalLint::Add(std::string_view piece) {
  State& is = *mState;
  is.empty = is.empty && piece.empty();
  is.nul = is.nul || piece.find('\0') != std::string_view::npos;
  while (!piece.empty()) {
    const std::size_t end = piece.find('\n');
    if (end == std::string_view::npos) return is.Keep(piece);
    std::string_view text = piece.substr(0, end);
    piece.remove_prefix(end + 1);
    const bool whole = text.empty() ? is.lastCr : text.back() == '\r';
    if (whole && is.part.empty()) {
      text.remove_suffix(1);
      is.EndLine(text);
    } else {
      is.Keep(text);
      if (whole) {
        if (is.part.back() == '\r') is.part.pop_back();
        is.EndLine(is.part);
        is.part.clear();
      } else {
        is.Keep("\n");
        ++is.partEnds;
      }
    }
    is.lastCr = false;
  }
}

std::vector<QalRemark> QalLint::Finish(const QALclass& package) {
  mState->Whole(package);
  return std::move(mState->remarks);
}

std::vector<QalRemark> LintText(std::string_view text, const std::string& fileName, const QALclass& package) {
  QalLint lint(fileName);
  lint.Add(text);
  return lint.Finish(package);
}

std::vector<QalRemark> LintFile(const std::filesystem::path& file, const QALclass& package) {
  QalLint lint(file.filename().string());
  files::PieceReader reader(file);
  while (reader.Next()) {
    lint.Add(reader.Text());
    reader.Take(reader.Text().size());
  }
  if (reader.Error()) return {{0, true, "cannot be read: " + reader.Error().message()}};
  return lint.Finish(package);
}

}  // namespace tarnwick
