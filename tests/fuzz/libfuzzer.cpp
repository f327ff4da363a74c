#include <cstdint>

#include "tests/fuzz/fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  recorder::RunInput({reinterpret_cast<const char*>(bytes), size});
  return 0;
}
