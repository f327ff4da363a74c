#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// `camera list` and `camera show`: print what is stored, without passwords. `configOption` is read when a command
/// runs.
void AddCameraLists(CLI::App& cameraCommand, const std::string& configOption);

}  // namespace recorder
