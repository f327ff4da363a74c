#pragma once

#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "recorder/utility/address_policy.h"
#include "recorder/utility/log_format.h"

namespace recorder {

/// How long the camera work of one request may take, from its first contact with a camera on.
struct CameraLimits {
  std::chrono::milliseconds test{10'000};     ///< a test, a size, a capability file
  std::chrono::milliseconds picture{15'000};  ///< a picture

  bool operator==(const CameraLimits&) const = default;
};

/// What the hash of a password costs each time that it is checked (Argon2id).
struct HashCost {
  int memoryMiB = 64;
  int passes = 2;  ///< over that memory

  bool operator==(const HashCost&) const = default;
};

/// What an administrator decides: one JSON file, described by docs/config.schema.json.
struct Config {
  std::filesystem::path stateFolder;   ///< records, keys, users: made with mode 0700 when missing
  std::filesystem::path modelsFolder;  ///< capability files, one a vendor
  std::filesystem::path module;        ///< the module's file, cameracap.so
  std::filesystem::path workFolder;    ///< where processes work; "../images/" is beside it
  std::filesystem::path pageFolder;    ///< the page for people, served beside the API; "": none
  bool cmsHost = false;                ///< this recorder manages a group of recording servers
  bool demandSandbox = false;          ///< no picture is decoded where parts of the decoder's sandbox are missing
  LogFormat log = LogFormat::kText;
  CameraLimits limits;
  AddressPolicy addressPolicy;
  HashCost hashCost;
  std::chrono::seconds watchInterval{300};  ///< between two checks of a stored camera
  std::vector<std::string> proxies;         ///< addresses of web servers in front that are believed whom they ask for
  std::vector<std::string> hostNames;  ///< names of this server, besides the loopback ones, that requests may go to
};

/// A configuration that cannot be used. The text names file, member and mistake.
class ConfigError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads and checks a configuration file. Relative paths in it start at the file's own folder; all paths of the result
/// are absolute. A file of a newer version is refused. Throws ConfigError.
Config LoadConfig(const std::filesystem::path& file);

/// What LoadConfig reads, such as "module" and "limits.testMs". A test compares it with docs/config.schema.json.
std::vector<std::string> SettingNames();

/// Makes `config` the configuration of this process, its address policy too, and prepares libsodium. Call once at
/// start, before the first request and before there are threads. Throws std::exception with a text for the
/// administrator.
void UseConfig(const Config& config);

/// The configuration that UseConfig was given; that of an empty file before. Any thread.
const Config& GetConfig();

}  // namespace recorder
