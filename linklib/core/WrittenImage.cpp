#include "linklib/WrittenImage.h"

namespace tarnwick::wire {

void WrittenImage::Note(std::int32_t index, std::uint16_t word) {
  const auto at = static_cast<std::size_t>(index);
  if (at >= mWords.size()) mWords.resize(at + 1, kUnwritten);
  mWords[at] = word;
}

bool WrittenImage::EachRun(const std::function<bool(std::uint16_t, ByteView)>& visit) const {
  Bytes run;
  for (std::size_t at = 0; at < mWords.size(); ++at) {
    if (mWords[at] == kUnwritten) continue;
    run.push_back(static_cast<std::uint8_t>(mWords[at] & 0xFF));
    run.push_back(static_cast<std::uint8_t>(mWords[at] >> 8));
    if (at + 1 < mWords.size() && mWords[at + 1] != kUnwritten) continue;
    if (!visit(static_cast<std::uint16_t>(at + 1 - run.size() / 2), run)) return false;
    run.clear();
  }
  return true;
}

}  // namespace tarnwick::wire
