#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// `test ID` and `snapshot ID`: call CameraTest and GetSnapshot with what is stored of a camera. `configOption` is read
/// when a command runs.
void AddStoredCallCommands(CLI::App& app, const std::string& configOption);

}  // namespace recorder
