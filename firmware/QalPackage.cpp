#include "firmware/QalPackage.h"

#include <limits>
#include <utility>

#include "Fields.h"

namespace tarnwick {
namespace {

/// A value is found from the mark before it, so that going through a list of any length costs no more
/// than its text.
constexpr std::int32_t kFieldsPerMark = 64;

}  // namespace

QalRevisions::QalRevisions(std::string text) : mText(std::move(text)) {
  if (mText.empty()) return;
  mMarks.push_back(0);
  mCount = 1;
  for (std::size_t at = mText.find(','); at != std::string::npos; at = mText.find(',', at + 1)) {
    if (mCount == std::numeric_limits<std::int32_t>::max()) return;
    if (mCount % kFieldsPerMark == 0) mMarks.push_back(at + 1);
    ++mCount;
  }
}

std::int32_t QalRevisions::Value(std::int32_t index) const {
  if (index < 1 || index > mCount) return 0;
  std::string_view rest = mText;
  rest.remove_prefix(mMarks[static_cast<std::size_t>((index - 1) / kFieldsPerMark)]);
  for (std::int32_t before = (index - 1) % kFieldsPerMark; before > 0; --before) TakeField(rest);
  return WholeNumber(TakeField(rest));
}

void QalPackage::SetError(QalError error) {
  Error = error;
  ErrorLine = LineCounter;
}

std::optional<QalWord> QalPackage::FindWord(std::int32_t device, std::int32_t word) const {
  const auto index = static_cast<std::size_t>(word);
  const QalRun* run = Images.Find(Device(device).Data, index);
  const std::size_t place = index % QalRun::kWords;
  if (run == nullptr || run->Devices[place] < device) return std::nullopt;
  return run->Words[place];
}

}  // namespace tarnwick
