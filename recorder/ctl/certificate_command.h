#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// `certificate make`: a certificate of the recorder's own, for `serve`. `configOption` is read when the command runs.
void AddCertificateCommands(CLI::App& app, const std::string& configOption);

}  // namespace recorder
