#pragma once

#include <CLI/CLI.hpp>

namespace recorder {

/// Makes --help-all print the help of every command of `app` behind that of `app`, each headed by the words that call
/// it. The manual page is made of it. Call when all commands are there.
void AddWholeHelp(CLI::App& app);

}  // namespace recorder
