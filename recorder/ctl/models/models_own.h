#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// `models list` and `models remove`, about the models that the user has brought. `configOption` is read when a command
/// runs.
void AddOwnModels(CLI::App& modelsCommand, const std::string& configOption);

}  // namespace recorder
