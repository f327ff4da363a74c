#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "recorder/ctl/serve/listen_address.h"
#include "recorder/utility/service.h"

namespace recorder {

/// The address at which this server answers, in a file of the state folder as long as this object lives, so that other
/// commands can name and ask it. Throws std::system_error.
class ServedAddress {
 public:
  /// `hostNames`: by which other machines know this one.
  ServedAddress(const std::filesystem::path& stateFolder, const ListenAddress& address, bool hasTls,
                const std::vector<std::string>& hostNames);
  ~ServedAddress();
  ServedAddress(const ServedAddress&) = delete;
  ServedAddress& operator=(const ServedAddress&) = delete;

  /// "http://127.0.0.1:8080/"
  const std::string& Text() const { return text_; }

  /// That of the server that runs, and the same by which this machine itself asks, without a name:
  /// "https://[::1]:8443/". They throw std::runtime_error when none does.
  static std::string Read(const std::filesystem::path& stateFolder);
  static std::string ReadLocal(const std::filesystem::path& stateFolder);

 private:
  const ServiceLock lock_;  // without it the file is that of a process that was killed
  const std::filesystem::path file_;
  const std::string text_;
};

}  // namespace recorder
