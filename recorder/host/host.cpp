#include "recorder/host/host.h"

#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

#include "recorder/device/model/model_files.h"
#include "recorder/records/records.h"
#include "recorder/utility/state_exchange.h"

namespace recorder {

namespace {

/// Where a package installs it.
constexpr char kSystemConfigFile[] = "/etc/cameracap/recorder.json";

}  // namespace

std::optional<std::filesystem::path> FindAnyConfigFile(const std::string& option) {
  if (!option.empty()) return std::filesystem::absolute(option);
  const char* fromEnvironment = std::getenv("RECORDER_CONFIG");
  if (fromEnvironment != nullptr && *fromEnvironment != '\0') return std::filesystem::absolute(fromEnvironment);
  std::error_code ignored;
  if (std::filesystem::exists(kSystemConfigFile, ignored)) return kSystemConfigFile;
  return std::nullopt;
}

std::filesystem::path FindConfigFile(const std::string& option) {
  if (const auto file = FindAnyConfigFile(option)) return *file;
  throw std::runtime_error("no configuration: give --config FILE or set RECORDER_CONFIG");
}

Config StartPlatform(const std::filesystem::path& configFile) {
  Config config = LoadConfig(configFile);
  UseConfig(config);
  FinishStateExchange(config.stateFolder);
  const Records records{config.stateFolder};  // a mistake shows now and not with the first request
  SetModelFolders(ModelFoldersOf(config));
  return config;
}

Host StartHost(const std::filesystem::path& configFile) {
  Config config = StartPlatform(configFile);
  std::filesystem::current_path(config.workFolder);
  std::signal(SIGPIPE, SIG_IGN);  // what the other side has closed shows in what is written
  ModuleLibrary module(config.module);
  return {std::move(config), std::move(module)};
}

}  // namespace recorder
