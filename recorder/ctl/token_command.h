#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// `token`: makes, lists and removes tokens of scripts. `configOption` is read when a command runs.
void AddTokenCommands(CLI::App& app, const std::string& configOption);

}  // namespace recorder
