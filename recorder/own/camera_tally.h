#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

namespace recorder {

/// How many stored cameras are in a state for a cause.
struct CameraTally {
  std::string_view state;  ///< "up", "down", "off" (switched off), or "unknown": not contacted yet
  std::string_view cause;  ///< of "down": the name of an Outcome, or "other"; else ""
  double count = 0;
};

/// Each state and cause there may be, always in the same order. Throws RecordsError.
std::vector<CameraTally> TallyCameras(const std::filesystem::path& stateFolder);

}  // namespace recorder
