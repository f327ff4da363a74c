#pragma once

#include <filesystem>
#include <string>

#include "recorder/host/host.h"
#include "recorder/utility/files.h"
#include "recorder/utility/state_exchange.h"

namespace recorder {

/// The configuration, for whoever reads or changes its state folder: an interrupted restore is brought to its end
/// first, which would undo any change. See FindConfigFile for `configOption`. Throws std::exception.
inline Config ConfigOfState(const std::string& configOption) {
  Config config = LoadConfig(FindConfigFile(configOption));
  FinishStateExchange(config.stateFolder);
  return config;
}

/// The state folder that it names, made if missing. Throws std::exception, also when it is another user's.
inline std::filesystem::path StateFolder(const std::string& configOption) {
  std::filesystem::path folder = ConfigOfState(configOption).stateFolder;
  MakePrivateFolder(folder);
  return folder;
}

}  // namespace recorder
