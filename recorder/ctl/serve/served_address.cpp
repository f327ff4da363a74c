#include "recorder/ctl/serve/served_address.h"

#include <stdexcept>
#include <system_error>

#include "recorder/ctl/own_addresses.h"
#include "recorder/utility/files.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

std::filesystem::path FileIn(const std::filesystem::path& stateFolder) { return stateFolder / "address"; }

/// One that other machines can reach, if there is one.
std::string AnyOwnAddress(bool mayBeIpv6) {
  for (const std::string& text : OwnAddresses()) {
    const bool isIpv6 = text.find(':') != std::string::npos;
    if (!ListenAddress{text}.IsForThisMachineAlone() && (mayBeIpv6 || !isIpv6)) return text;
  }
  return "localhost";
}

std::string HostToAsk(const ListenAddress& address, const std::vector<std::string>& hostNames) {
  if (!address.IsForThisMachineAlone() && !hostNames.empty()) return hostNames.front();
  return address.IsEveryAddress() ? AnyOwnAddress(address.host == "::") : address.host;
}

}  // namespace

ServedAddress::ServedAddress(const std::filesystem::path& stateFolder, const ListenAddress& address, bool hasTls,
                             const std::vector<std::string>& hostNames)
    : lock_(stateFolder),
      file_(FileIn(stateFolder)),
      text_((hasTls ? "https://" : "http://") + WithBrackets(HostToAsk(address, hostNames)) + ":" +
            std::to_string(address.port) + "/") {
  ReplaceFile(file_, text_);
}

ServedAddress::~ServedAddress() {
  std::error_code ignored;
  std::filesystem::remove(file_, ignored);
}

std::string ServedAddress::Read(const std::filesystem::path& stateFolder) {
  if (!std::filesystem::exists(FileIn(stateFolder)) || !IsServiceRunning(stateFolder)) {
    throw std::runtime_error("the recorder does not run: recorderctl serve starts it");
  }
  return ReadFile(FileIn(stateFolder));
}

}  // namespace recorder
