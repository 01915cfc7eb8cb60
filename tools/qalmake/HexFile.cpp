#include "HexFile.h"

#include <algorithm>
#include <numeric>
#include <span>

namespace tarnwick::qalmake {
namespace {

constexpr std::uint32_t kSegment = 0x10000;

constexpr int Digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

constexpr std::array<std::int8_t, 256> kDigits = [] {
  std::array<std::int8_t, 256> table{};
  for (unsigned c = 0; c < table.size(); ++c)
    table[c] = static_cast<std::int8_t>(Digit(static_cast<char>(c)));
  return table;
}();

/// Bytes of the longest record: count, address, type, 255 of data, checksum.
constexpr std::size_t kLongestRecord = 260;

/// Puts what `digits` are into `bytes`, of which there are half as many. False where one is no hexadecimal digit.
bool ReadDigits(std::string_view digits, std::span<std::uint8_t> bytes) {
  int wrong = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const int high = kDigits[static_cast<unsigned char>(digits[2 * i])];
    const int low = kDigits[static_cast<unsigned char>(digits[2 * i + 1])];
    wrong |= high | low;
    bytes[i] = static_cast<std::uint8_t>((high & 0xF) << 4 | (low & 0xF));
  }
  return wrong >= 0;
}

/// Reads records one after the other; the last extended address counts for those behind it.
class Reader {
 public:
  explicit Reader(HexBytes& bytes) : mBytes(bytes) {}
  bool Ended() const { return mEnded; }

  /// What is wrong with the line, or nothing.
  std::string Line(std::string_view line) {
    if (mEnded) return "a line behind the end-of-file record";
    if (line.front() != ':') return "no record: it does not begin with a colon";
    line.remove_prefix(1);
    if (line.size() / 2 > kLongestRecord) return "the record has another length";
    const std::span record = std::span(mRecord).first(line.size() / 2);
    if (line.size() % 2 != 0 || !ReadDigits(line, record))
      return "no record: not all pairs of hexadecimal digits";
    if (record.size() < 5 || record.size() != 5u + record[0]) return "the record has another length";
    if (std::accumulate(record.begin(), record.end(), 0u) % 0x100 != 0) return "the checksum differs";
    return Record(record[3], record[1] * 0x100u + record[2], record.subspan(4, record[0]));
  }

 private:
  std::string Record(int type, std::uint32_t address, std::span<const std::uint8_t> data) {
    static constexpr std::size_t kLengths[] = {0, 0, 2, 4, 2, 4};
    if (type > 5) return "records of the type " + std::to_string(type) + " mean nothing";
    if (type != 0 && data.size() != kLengths[type]) return "a record of its type has another length";
    if (type == 0) return Data(address, data);
    if (type == 1) mEnded = true;
    if (type == 2 || type == 4) {
      const std::uint32_t value = data[0] * 0x100u + data[1];
      mBase = type == 2 ? value * 0x10 : value * kSegment;
    }
    return {};
  }

  std::string Data(std::uint32_t address, std::span<const std::uint8_t> data) {
    if (address + data.size() > kSegment) return "the record goes on behind the last address of its 64 KB";
    return mBytes.Put(mBase + address, data) ? "" : "another record gives another value for a byte of it";
  }

  HexBytes& mBytes;
  std::array<std::uint8_t, kLongestRecord> mRecord{};
  std::uint32_t mBase = 0;
  bool mEnded = false;
};

}  // namespace

bool HexBytes::Put(std::uint32_t address, std::span<const std::uint8_t> values) {
  while (!values.empty()) {
    if (mPage == nullptr || mNumber != address / kPage) {
      mNumber = static_cast<std::uint32_t>(address / kPage);
      mPage = &mPages[mNumber];
    }
    const std::size_t place = address % kPage;
    const std::size_t count = std::min(values.size(), kPage - place);
    const std::span there = std::span(mPage->values).subspan(place, count);
    const std::span given = std::span(mPage->given).subspan(place, count);
    for (std::size_t i = 0; i < count; ++i) {
      if (given[i] && there[i] != values[i]) return false;
    }
    std::copy_n(values.begin(), count, there.begin());
    std::fill(given.begin(), given.end(), true);
    address += static_cast<std::uint32_t>(count);
    values = values.subspan(count);
  }
  return true;
}

std::vector<HexWord> HexBytes::Words() const {
  std::vector<HexWord> words;
  words.reserve(mPages.size() * kPage / 2);
  for (const auto& [number, page] : mPages) {
    for (std::size_t at = 0; at < kPage; at += 2) {
      if (!page.given[at] && !page.given[at + 1]) continue;
      words.push_back({static_cast<std::uint32_t>((number * std::uint64_t{kPage} + at) / 2), page.values[at],
                       page.values[at + 1], page.given[at], page.given[at + 1]});
    }
  }
  return words;
}

std::string ReadHexFile(std::string_view text, HexBytes& bytes) {
  Reader reader(bytes);
  for (int number = 1; !text.empty(); ++number) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    line = line.substr(0, line.find_last_not_of(" \t\r") + 1);
    if (line.empty()) continue;
    if (const std::string fault = reader.Line(line); !fault.empty())
      return std::to_string(number) + ": " + fault;
  }
  return reader.Ended() ? "" : "the end-of-file record is missing: the file may be cut";
}

}  // namespace tarnwick::qalmake
