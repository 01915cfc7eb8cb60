#include "firmware/QalPackage.h"

namespace tarnwick {

void QalPackage::SetError(QalError error) {
  Error = error;
  ErrorLine = LineCounter;
}

const QalWord* QalPackage::FindWord(std::int32_t device, std::int32_t word) const {
  const QalImage& image = Images[Devices[static_cast<std::size_t>(device - 1)].Data];
  const auto index = static_cast<std::size_t>(word);
  return index < image.size() && image[index].Devices >= device ? &image[index] : nullptr;
}

}  // namespace tarnwick
