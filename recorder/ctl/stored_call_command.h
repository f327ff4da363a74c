#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "recorder/records/records.h"

namespace recorder {

/// A camera that may be asked: nobody's password goes to one that is switched off. Throws std::runtime_error when it is
/// disabled, or not there.
CameraRecord FindEnabled(const Records& records, int id);

/// `test ID` and `snapshot ID`: call CameraTest and GetSnapshot with what is stored of a camera. `configOption` is read
/// when a command runs.
void AddStoredCallCommands(CLI::App& app, const std::string& configOption);

}  // namespace recorder
