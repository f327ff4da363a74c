#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// `backup` and `restore`: all that makes up a recorder, in one file. `configOption` is read when a command runs.
void AddBackupCommands(CLI::App& app, const std::string& configOption);

}  // namespace recorder
