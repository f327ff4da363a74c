#pragma once

#include <string>

namespace recorder {

// Ports, the first four of an address that names none (RFC 9110 section 4.2, RFC 2326 section 3.2, RFC 7826 section
// 4.2).
inline constexpr int kHttpPort = 80;
inline constexpr int kHttpsPort = 443;
inline constexpr int kRtspPort = 554;
inline constexpr int kRtspsPort = 322;
inline constexpr int kLargestPort = 65'535;

/// Where a camera is and who we are there. User and password are fields: they go into a login and nowhere else, never
/// into an address or a log line.
struct CameraAddress {
  std::string host;  ///< name, IPv4 or IPv6 address, the last with or without brackets
  int port = 0;
  std::string user;
  std::string password;
  bool isTls = false;  ///< what is spoken there goes inside TLS; HTTP does so at kHttpsPort in any case
};

/// False when there is nothing to log in with.
inline bool HasLogin(const CameraAddress& address) { return !address.user.empty() || !address.password.empty(); }

/// "host:port" for log lines. What stands before an '@' is left out, since some paste "user:password@host" as an
/// address.
inline std::string PlaceOf(const CameraAddress& address) {
  return address.host.substr(address.host.rfind('@') + 1) + ":" + std::to_string(address.port);
}

}  // namespace recorder
