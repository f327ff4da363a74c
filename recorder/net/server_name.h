#pragma once

#include <string>

namespace recorder {

/// What the software at a port says of itself, as it came. Of any length that an answer's header lines may have.
struct ServerName {
  std::string software;  ///< header "Server" (RFC 9110 section 10.2.4, RFC 2326 section 12.36), or ""
  std::string realm;     ///< of the first login that it asked for, or ""
};

}  // namespace recorder
