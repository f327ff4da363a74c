#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace recorder {

/// What is of use in an address that a camera names; user, password and fragment are not.
struct CameraUrl {
  std::string scheme;  ///< lower case
  std::string host;    ///< as NormalizedHost has it; only to be compared: many cameras know that of an inner network
  int port = 0;        ///< that of the scheme when the address names none; 0 when that is not known either
  bool namesPort = false;  ///< the port stands in it
  std::string path;        ///< with the query, as it may stand in a request line (RFC 3986): "/" at least
};

/// The one reader of addresses that come from cameras, on libcurl's. Nothing when `text` is no absolute address with a
/// host, holds a control character, or names a port that cannot exist. Blanks around it do not count. Any thread.
std::optional<CameraUrl> ParseCameraUrl(std::string_view text);

/// The same, and nothing when the scheme is neither http nor https.
std::optional<CameraUrl> ParseHttpUrl(std::string_view text);

}  // namespace recorder
