#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace recorder::find {

/// What a server's name or realm tells of the maker.
struct MakerGuess {
  std::string vendor;    ///< as its model file has it; "": nothing
  bool isNamed = false;  ///< the vendor's own name stands there; else it is only likely
};

/// Which of `vendors` the text `said` points at. Pure.
MakerGuess MakerIn(std::string_view said, const std::vector<std::string>& vendors);

}  // namespace recorder::find
