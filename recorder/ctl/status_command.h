#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// `status`: which stored cameras are down, why, and since when. `configOption` is read when the command runs.
void AddStatusCommand(CLI::App& app, const std::string& configOption);

}  // namespace recorder
