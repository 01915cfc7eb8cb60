#include "Maker.h"

#include <algorithm>

#include "firmware/QALclass.h"
#include "firmware/QalLint.h"
#include "firmware/QalWriter.h"

namespace tarnwick::qalmake {
namespace {

constexpr std::uint32_t kLastBegin = 0x7FFF;  ///< The last word at which a record can begin.
constexpr std::uint32_t kLongest = 127;       ///< Words of a record at most.
constexpr std::uint32_t kLine = 8;            ///< Words of an ordinary one.
constexpr std::uint32_t kLastWord = kLastBegin + kLongest - 1;

std::string Hex(std::uint32_t word) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%04X", word);
  return text;
}

bool IsLeftOut(const Wish& wish, std::uint32_t word) {
  return std::any_of(wish.leaveOut.begin(), wish.leaveOut.end(),
                     [word](const WordRange& range) { return word >= range.first && word <= range.second; });
}

/// Takes the words that are not for the package off `words`. Which they were, or nothing where there are none.
std::string LeaveOut(const Wish& wish, std::vector<HexWord>& words) {
  std::vector<WordRange> out;
  const std::size_t all = words.size();
  std::erase_if(words, [&](const HexWord& word) {
    if (!IsLeftOut(wish, word.index)) return false;
    if (out.empty() || out.back().second + 1 != word.index) out.emplace_back(word.index, word.index);
    out.back().second = word.index;
    return true;
  });
  std::string told;
  for (const auto& [first, last] : out)
    told += (told.empty() ? ": " : ", ") + Hex(first) + (first == last ? "" : "-" + Hex(last));
  return told.empty() ? told : std::to_string(all - words.size()) + " words left out" + told;
}

/// The words of a part that go into the package.
std::vector<HexWord> WordsOf(const Wish& wish, const Part& part, Made& made) {
  HexBytes bytes;
  const auto fault = [&](const std::string& what) { made.faults.push_back(part.file + ": " + what); };
  if (const std::string wrong = ReadHexFile(part.text, bytes); !wrong.empty())
    return fault(wrong), std::vector<HexWord>();
  std::vector<HexWord> words = bytes.Words();
  if (const std::string out = LeaveOut(wish, words); !out.empty())
    made.remarks.push_back(part.file + ": " + out);
  if (words.empty() || words.back().index == 0) {
    fault("there is no word above word 0, without which no package loads");
  } else if (words.back().index > kLastWord) {
    const auto beyond =
        std::find_if(words.begin(), words.end(), [](auto& word) { return word.index > kLastWord; });
    fault("words " + Hex(beyond->index) + " to " + Hex(words.back().index) +
          " lie behind the last that a package can tell, " + Hex(kLastWord) +
          ": --leave-out leaves them out");
  }
  for (const HexWord& word : words) {
    if (word.hasLo && word.hasHi) continue;
    fault("of word " + Hex(word.index) + " there is one byte alone, which a package cannot tell");
    break;
  }
  return words;
}

/// The records that give `words`. What cannot be told becomes a fault.
std::string RecordsOf(const std::vector<HexWord>& words, const std::string& file, Made& made) {
  std::string records;
  records.reserve(words.size() * 6);
  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; i < words.size();) {
    const std::uint32_t first = words[i].index;
    if (first > kLastBegin) {
      made.faults.push_back(file + ": word " + Hex(first) + " can be told together with all from " +
                            Hex(kLastBegin) + " on alone");
      return {};
    }
    const std::uint32_t most =
        first == kLastBegin ? kLongest : std::min(kLine - first % kLine, kLastBegin - first);
    bytes.clear();
    for (; i < words.size() && words[i].index < first + most && words[i].index == first + bytes.size() / 2;
         ++i) {
      bytes.push_back(words[i].lo);
      bytes.push_back(words[i].hi);
    }
    records += QalHexLine(static_cast<std::uint16_t>(first * 2), bytes);
  }
  return records;
}

/// Whether device `number` has these words and no others.
bool HasWords(const QALclass& package, std::int32_t number, const std::vector<HexWord>& words) {
  const QalDeviceImage image = package.DeviceImage(number);
  if (image.Words.size() - static_cast<std::size_t>(image.NullPadded) != words.size()) return false;
  return std::all_of(words.begin(), words.end(), [&](const HexWord& word) {
    return word.index < image.Words.size() && image.Words[word.index].LoByte == word.lo &&
           image.Words[word.index].HiByte == word.hi &&
           !package.DeviceNullPadded(number, static_cast<std::int32_t>(word.index));
  });
}

/// Loads what was made, and holds it against what was wished.
void ReadBack(const Wish& wish, const std::vector<std::vector<HexWord>>& words, Made& made) {
  QALclass package;
  package.LoadQALfile({}, made.package);
  const auto fault = [&](const std::string& what) { made.faults.push_back(wish.fileName + ": " + what); };
  if (package.ErrorsFound())
    return fault(package.LastErrorMessage() + " at line " + std::to_string(package.LastErrorLine()));
  for (const QalRemark& remark : LintText(made.package, wish.fileName, package)) {
    const std::string what = "line " + std::to_string(remark.Line) + ": " + remark.What;
    remark.Harmful ? fault(what) : made.remarks.push_back(wish.fileName + ": " + what);
  }
  const bool same = package.Filename() == wish.fileName && package.FileDate() == wish.date &&
                    package.Comments() == wish.comments && package.ModelNumber() == wish.model &&
                    package.ModelName() == wish.modelName && package.HwRev() == wish.hwRev;
  if (!same) fault("a text of the header cannot be told as it is: blanks at an end, or a line end");
  std::int32_t number = 0;
  for (std::size_t part = 0; part < wish.parts.size(); ++part) {
    for (const std::string& device : wish.parts[part].devices) {
      ++number;
      if (number > package.Devices() ||
          package.DeviceName(number) + ", " + std::to_string(package.DeviceAddress(number)) != device)
        fault("\"" + device + "\" cannot be told as it is");
      else if (!HasWords(package, number, words[part]))
        fault("the words of \"" + device + "\" are not those of the hex file");
    }
  }
}

}  // namespace

Made MakePackage(const Wish& wish) {
  Made made;
  QalHeader header{.FileVersion = wish.hwRev.empty() ? "1.1" : "1.2",
                   .Filename = wish.fileName,
                   .FileDate = wish.date,
                   .Comments = wish.comments,
                   .ModelNumber = wish.model,
                   .ModelName = wish.modelName,
                   .HwRev = wish.hwRev,
                   .Devices = {}};
  std::string blocks;
  std::vector<std::vector<HexWord>> words;
  for (std::size_t i = 0; i < wish.parts.size(); ++i) {
    const Part& part = wish.parts[i];
    std::string id = wish.recordId;
    if (wish.parts.size() > 1) id += std::to_string(i + 1) + "_";
    id += part.version;
    for (const std::string& device : part.devices) header.Devices.push_back(device + ", " + id);
    words.push_back(WordsOf(wish, part, made));
    if (made.faults.empty()) blocks += QalBlock(id, RecordsOf(words.back(), part.file, made));
  }
  if (made.faults.empty()) {
    made.package = QalHeaderText(header) + blocks;
    ReadBack(wish, words, made);
  }
  if (!made.faults.empty()) made.package.clear();
  return made;
}

}  // namespace tarnwick::qalmake
