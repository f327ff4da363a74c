#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// `measure`: plays a stream of a camera for some seconds and prints what comes. `configOption` is read when the
/// command runs.
void AddMeasureCommand(CLI::App& app, const std::string& configOption);

}  // namespace recorder
