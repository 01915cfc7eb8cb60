#include "FailingMemory.h"

#include <cstdlib>
#include <new>

namespace tarnwick::test {
int gAllocationsLeft = -1;
}

void* operator new(std::size_t size) {
  int& left = tarnwick::test::gAllocationsLeft;
  if (left == 0) throw std::bad_alloc();
  if (left > 0) --left;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
