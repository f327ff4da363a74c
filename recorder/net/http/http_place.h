#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "recorder/net/camera_address.h"

namespace recorder {

/// Where a request goes.
struct HttpPlace {
  bool isTls = false;
  std::string host;
  int port = 0;
  std::string path;  ///< with the query

  bool operator==(const HttpPlace&) const = default;
};

/// `path`, as RequestPath gives it, at the camera's own port: https on 443 and where the address says so, else http.
HttpPlace PlaceAt(const CameraAddress& camera, std::string path);

/// `path` as it may stand in a request line: with a leading slash, and with percent-encoding for blanks and for
/// whatever has no place in an address (RFC 3986). Nothing for a path with control characters, which could add header
/// lines.
std::optional<std::string> RequestPath(std::string_view path);

/// The place that a redirect from `from` to the absolute address `location` leads to. Nothing when it must not be
/// followed: another host, another protocol than http and https, or https left for http.
std::optional<HttpPlace> RedirectTarget(const HttpPlace& from, const std::string& location);

}  // namespace recorder
