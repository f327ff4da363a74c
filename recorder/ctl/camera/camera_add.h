#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// `camera add`: stores one camera. `configOption` is read when the command runs.
void AddCameraAdd(CLI::App& cameraCommand, const std::string& configOption);

}  // namespace recorder
