#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// `camera add|list|show|edit|remove|restore|password|status|import`: the stored cameras. `configOption` is read when
/// a command runs.
void AddCameraCommands(CLI::App& app, const std::string& configOption);

}  // namespace recorder
