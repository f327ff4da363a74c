#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// `serve`: runs the recorder's web server with its workers in the foreground until SIGTERM or SIGINT. Prints its
/// address on one line of standard output when it is ready. `configOption` is read when the command runs.
void AddServeCommand(CLI::App& app, const std::string& configOption);

}  // namespace recorder
