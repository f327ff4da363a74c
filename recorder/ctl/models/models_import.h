#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// `models import`: takes models of a file, ours or a list, as the user's own, and names what is wrong with the others.
/// `configOption` is read when the command runs.
void AddModelsImport(CLI::App& modelsCommand, const std::string& configOption);

}  // namespace recorder
