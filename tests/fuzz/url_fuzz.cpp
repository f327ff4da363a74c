#include <algorithm>
#include <string>

#include "recorder/net/camera_url.h"
#include "recorder/utility/text.h"
#include "tests/fuzz/fuzz.h"

// An address that a camera names. What is made of one is an address again, which reads alike.

namespace recorder {

void RunInput(std::string_view input) {
  const auto url = ParseCameraUrl(input);
  if (!url) return;
  Require(!url->host.empty() && !HoldsControls(url->host) && url->port >= 0 && url->port <= 65535);
  Require(std::all_of(url->path.begin(), url->path.end(),
                      [](char c) { return c > ' ' && c < '\x7f' && c != '{' && c != '}' && c != '#'; }));
  const std::string port = url->port == 0 ? "" : ":" + std::to_string(url->port);
  const auto again = ParseCameraUrl(url->scheme + "://user@cam" + port + url->path);
  Require(again && again->scheme == url->scheme && again->port == url->port && again->path == url->path);
}

}  // namespace recorder
