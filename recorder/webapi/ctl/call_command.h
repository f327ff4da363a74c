#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// `call METHOD [key=value ...]`: makes one API call in this process. Exit status 0 for a success, 1 for an error
/// answer, 2 for wrong usage. `configOption` is read when the command runs.
void AddCallCommand(CLI::App& app, const std::string& configOption);

}  // namespace recorder
