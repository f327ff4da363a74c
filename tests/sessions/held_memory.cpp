#include "tests/sessions/held_memory.h"

#include <algorithm>
#include <cstdlib>
#include <new>

// Before each piece of memory stands how much of it is counted.

namespace {

constexpr std::size_t kBefore = __STDCPP_DEFAULT_NEW_ALIGNMENT__;

}  // namespace

void* operator new(std::size_t size) {
  auto* const memory = static_cast<char*>(std::malloc(kBefore + size));
  if (memory == nullptr) throw std::bad_alloc();
  const std::size_t counted = sessions::heldMemory.isCounting ? size : 0;
  *reinterpret_cast<std::size_t*>(memory) = counted;
  sessions::heldMemory.bytes += counted;
  sessions::heldMemory.most = std::max(sessions::heldMemory.most, sessions::heldMemory.bytes);
  return memory + kBefore;
}

void operator delete(void* memory) noexcept {
  if (memory == nullptr) return;
  char* const begin = static_cast<char*>(memory) - kBefore;
  sessions::heldMemory.bytes -= *reinterpret_cast<std::size_t*>(begin);
  std::free(begin);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept { operator delete(memory); }
