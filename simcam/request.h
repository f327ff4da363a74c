#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace simcam {

/// A request of RTSP (RFC 2326) or HTTP (RFC 9112); the two are written alike.
struct Request {
  std::string method;
  std::string target;   ///< as sent: a path for HTTP, mostly a whole address for RTSP
  std::string version;  ///< "RTSP/1.0", "HTTP/1.1"
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;

  /// The first header of that name, in any case of letters; empty if there is none.
  [[nodiscard]] std::string Header(const char* name) const;
  /// The target without scheme and authority, with its query.
  [[nodiscard]] std::string Path() const;
  [[nodiscard]] bool IsRtsp() const { return version.starts_with("RTSP/"); }
};

/// True for two texts that differ at most in the case of ASCII letters.
bool EqualNoCase(const std::string& a, const char* b);

/// The path of an address such as "rtsp://host:554/path?query".
std::string PathOf(const std::string& address);

/// Takes one whole request off the front of `buffer`; nothing as long as it is not complete. A head that cannot be
/// understood gives a request with an empty method.
std::optional<Request> TakeRequest(std::string& buffer);

/// The reason phrase of a status of HTTP or of RTSP, which took HTTP's over (RFC 2326, section 7.1.1).
const char* Reason(int status);

}  // namespace simcam
