#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// `camera edit ID`: changes of a stored camera, an option each. `configOption` is read when the command runs.
void AddCameraEditCommand(CLI::App& cameraCommand, const std::string& configOption);

}  // namespace recorder
