#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// `models export`: prints what is known of a stored camera as a model file. `configOption` is read when the command
/// runs.
void AddModelsExport(CLI::App& modelsCommand, const std::string& configOption);

}  // namespace recorder
