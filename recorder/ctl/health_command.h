#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// Adds the command "health".
void AddHealthCommand(CLI::App& app, const std::string& configOption);

}  // namespace recorder
