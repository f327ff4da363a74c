#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// `call METHOD [key=value ...]`: makes one API call in this process. Exit status 0 for a success, 1 for an error
/// answer, 2 for wrong usage. `methods`: prints what the module's table announces, "API/version/method" a line.
/// `configOption` is read when a command runs.
void AddCallCommands(CLI::App& app, const std::string& configOption);

}  // namespace recorder
