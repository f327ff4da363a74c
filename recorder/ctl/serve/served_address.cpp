#include "recorder/ctl/serve/served_address.h"

#include <algorithm>
#include <stdexcept>
#include <system_error>

#include "recorder/ctl/own_addresses.h"
#include "recorder/utility/files.h"
#include "recorder/utility/state_files.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

std::filesystem::path FileIn(const std::filesystem::path& stateFolder) { return stateFolder / kAddressFile; }

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

/// Where the server listens on this machine.
std::string OwnHost(const ListenAddress& address) {
  if (!address.IsEveryAddress()) return address.host;
  return address.host == "::" ? "::1" : "127.0.0.1";
}

std::string TextOf(const ListenAddress& address, bool hasTls, const std::string& host) {
  return (hasTls ? "https://" : "http://") + WithBrackets(host) + ":" + std::to_string(address.port) + "/";
}

/// The two texts, in a line each.
std::vector<std::string> ReadTexts(const std::filesystem::path& stateFolder) {
  if (!std::filesystem::exists(FileIn(stateFolder)) || !IsServiceRunning(stateFolder)) {
    throw std::runtime_error("the recorder does not run: recorderctl serve starts it");
  }
  const std::string text = ReadFile(FileIn(stateFolder));
  const std::size_t end = std::min(text.find('\n'), text.size());
  return {text.substr(0, end), text.substr(std::min(end + 1, text.size()))};
}

}  // namespace

ServedAddress::ServedAddress(const std::filesystem::path& stateFolder, const ListenAddress& address, bool hasTls,
                             const std::vector<std::string>& hostNames)
    : lock_(stateFolder), file_(FileIn(stateFolder)), text_(TextOf(address, hasTls, HostToAsk(address, hostNames))) {
  ReplaceFile(file_, text_ + '\n' + TextOf(address, hasTls, OwnHost(address)));
}

ServedAddress::~ServedAddress() {
  std::error_code ignored;
  std::filesystem::remove(file_, ignored);
}

std::string ServedAddress::Read(const std::filesystem::path& stateFolder) { return ReadTexts(stateFolder).front(); }

std::string ServedAddress::ReadLocal(const std::filesystem::path& stateFolder) { return ReadTexts(stateFolder).back(); }

}  // namespace recorder
