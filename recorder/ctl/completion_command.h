#pragma once

#include <CLI/CLI.hpp>

namespace recorder {

/// Adds "completion", which prints what makes bash complete the commands and options of `app`, as they are when it is
/// asked, and the methods and parameters of `call`.
void AddCompletionCommand(CLI::App& app);

}  // namespace recorder
