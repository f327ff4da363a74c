#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// `camera remove`, `camera restore`, `camera password` and `camera status`: change what is stored of one camera.
/// `configOption` is read when a command runs.
void AddCameraChanges(CLI::App& cameraCommand, const std::string& configOption);

}  // namespace recorder
