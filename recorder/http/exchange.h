#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace recorder {

/// One request as a web server hands it over (RFC 3875), and the way back.
struct Exchange {
  std::function<const char*(const char*)> variable;  ///< of CGI, or null
  std::function<std::string(std::size_t)> readBody;  ///< so many bytes of it; fewer when it ends early
  std::function<bool(std::string_view)> send;        ///< at once; false when whoever asked has gone
};

}  // namespace recorder
