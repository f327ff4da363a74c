#pragma once

#include <optional>
#include <string>

namespace recorder {

/// Where the web server listens.
struct ListenAddress {
  std::string host = "127.0.0.1";  ///< numeric, in its shortest form, IPv6 without brackets
  int port = 0;                    ///< 0: a free one

  /// True when no other machine can ask: exactly 127.0.0.1 and ::1.
  bool IsForThisMachineAlone() const { return host == "127.0.0.1" || host == "::1"; }
  /// True when it stands for all addresses of this machine.
  bool IsEveryAddress() const { return host == "0.0.0.0" || host == "::"; }
};

/// Reads "192.0.2.7:8443" or "[2001:db8::7]:8443"; nothing for any other text, such as one with a name.
std::optional<ListenAddress> ParseListenAddress(const std::string& text);

}  // namespace recorder
