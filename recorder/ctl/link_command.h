#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// `link`: prints an address that signs somebody in once. `configOption` is read when the command runs.
void AddLinkCommand(CLI::App& app, const std::string& configOption);

}  // namespace recorder
