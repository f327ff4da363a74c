#pragma once

#include <filesystem>
#include <string>

#include "recorder/webapi/host.h"

namespace recorder {

/// The state folder that the configuration names; see FindConfigFile for `configOption`. Throws std::exception.
inline std::filesystem::path StateFolder(const std::string& configOption) {
  return LoadConfig(FindConfigFile(configOption)).stateFolder;
}

}  // namespace recorder
