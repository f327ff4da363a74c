#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// `user add|remove|list`: the web server's logins. `configOption` is read when a command runs.
void AddUserCommands(CLI::App& app, const std::string& configOption);

}  // namespace recorder
