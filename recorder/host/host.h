#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "recorder/host/module_library.h"
#include "recorder/utility/config.h"

namespace recorder {

/// What serves API calls in a process: the configuration and the loaded module.
struct Host {
  Config config;
  ModuleLibrary module;
};

/// The configuration file to use: `option` when it is not empty, else what the environment variable RECORDER_CONFIG
/// names, else that of an installed package; nothing when there is none of them.
std::optional<std::filesystem::path> FindAnyConfigFile(const std::string& option);

/// The same where there has to be one: throws std::runtime_error.
std::filesystem::path FindConfigFile(const std::string& option);

/// Loads the configuration and makes the platform functions ready: records, models, limits. Throws std::exception.
Config StartPlatform(const std::filesystem::path& configFile);

/// Makes the process ready to serve API calls: the platform and the module, and the working folder beside "images/"
/// that the module's relative paths start from; SIGPIPE is ignored. Call once, before there are threads. Throws
/// std::exception.
Host StartHost(const std::filesystem::path& configFile);

}  // namespace recorder
