#pragma once

#include <cstdlib>
#include <string_view>

namespace recorder {

/// One run of a target: reads `input`, which may hold anything. Each target has its own.
void RunInput(std::string_view input);

/// Ends the program: what a reader promises of its results does not hold.
inline void Require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace recorder
