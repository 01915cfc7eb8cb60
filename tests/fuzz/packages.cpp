// libFuzzer's way into the loader, which begins with the odd cases beside it: whatever the text, the plain
// reader makes the same of it.
#include "support/PlainReader.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

/// Most inputs get right checksums, which no fuzzer hits by itself.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most,
                                               unsigned seed) {
  size = LLVMFuzzerMutate(data, size, most);
  std::string text(data, data + size);
  if (seed % 4 != 0) tarnwick::test::RepairCheckSums(text);
  std::copy(text.begin(), text.end(), data);
  return size;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (!tarnwick::test::Agreed({data, data + size})) std::abort();
  return 0;
}
