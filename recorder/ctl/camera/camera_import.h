#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// `camera import`: stores the cameras of a CSV file and names what is wrong with the others. `configOption` is read
/// when the command runs.
void AddCameraImport(CLI::App& cameraCommand, const std::string& configOption);

}  // namespace recorder
