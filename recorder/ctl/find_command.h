#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <string>

#include "recorder/device/find/find.h"
#include "recorder/utility/config.h"

namespace recorder {

/// `find`: finds the streams of a camera by its address. `configOption` is read when the command runs.
void AddFindCommand(CLI::App& app, const std::string& configOption);

/// Makes the process ready to find, by the configuration at `configFile`: models, address policy, limits. Throws
/// std::exception.
Config StartFinding(const std::filesystem::path& configFile);

/// Finds, and tells whoever sits at a terminal what has ended meanwhile. Throws std::runtime_error, which names the
/// cause, when there is no stream.
FindResult FindInSight(const FindRequest& request);

/// What the user has to know beside the streams, on standard error.
void PrintWarnings(const FindResult& result);

}  // namespace recorder
