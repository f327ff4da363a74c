#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// `check-models [FOLDER]`: names every mistake in the model files, by default those of the configuration, and counts
/// their facts by who says so. Exit status 1 when there is any mistake. `configOption` is read when the command runs.
///
/// `models`: the commands about models that users bring and hand on.
void AddModelsCommand(CLI::App& app, const std::string& configOption);

}  // namespace recorder
