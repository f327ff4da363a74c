#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>

#include "recorder/records/records.h"

namespace recorder {

/// What is known of a stored camera without asking it.
struct CameraState {
  CameraOutcome outcome;
  int flips = 0;                                                 ///< how often that changed within a day
  std::optional<std::chrono::milliseconds> time = std::nullopt;  ///< that the last check took; nothing before the first
};

/// The states of those cameras with which there was contact, by id. Throws RecordsError or std::system_error.
std::map<int, CameraState> ReadStates(const Records& records, const std::filesystem::path& stateFolder);

/// That of one camera.
std::optional<CameraState> ReadState(const Records& records, const std::filesystem::path& stateFolder, int id);

}  // namespace recorder
