#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// `session`: lists sessions, and ends them. `configOption` is read when a command runs.
void AddSessionCommands(CLI::App& app, const std::string& configOption);

}  // namespace recorder
