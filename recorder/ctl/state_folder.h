#pragma once

#include <filesystem>
#include <string>

#include "recorder/host/host.h"
#include "recorder/utility/files.h"
#include "recorder/utility/state_exchange.h"

namespace recorder {

/// The state folder that the configuration names, made if missing; see FindConfigFile for `configOption`. Throws
/// std::exception, also when it is another user's.
inline std::filesystem::path StateFolder(const std::string& configOption) {
  std::filesystem::path folder = LoadConfig(FindConfigFile(configOption)).stateFolder;
  MakePrivateFolder(folder);
  FinishStateExchange(folder);
  return folder;
}

}  // namespace recorder
