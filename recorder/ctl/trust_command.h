#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// `trust add|remove|list|pair`: keys of trusted clients and of the server group. `configOption` is read when a command
/// runs.
void AddTrustCommands(CLI::App& app, const std::string& configOption);

}  // namespace recorder
