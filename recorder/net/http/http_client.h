#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "recorder/net/camera_address.h"
#include "recorder/utility/outcome.h"

// HTTP GET from a camera, over libcurl.
//
// Time:    ends at the deadline of the calling thread's RequestScope, name lookup included.
// Thread:  any; calls share nothing.
// Login:   Basic and Digest (RFC 7617, RFC 7616 with MD5 and SHA-256), sent only when the camera asks for one, and
//          once: a refused login is remembered in the RequestScope. It goes to the host that the caller names and to no
//          other.
// Secrets: user and password go into an Authorization header and nowhere else, never into an address.

namespace recorder {

/// Receives the body of a 200 answer as it arrives.
class BodyReader {
 public:
  enum class Step {
    kMore,       ///< wants what follows
    kEnough,     ///< has what it wants; the connection is closed
    kMalformed,  ///< cannot use this body
  };

  virtual ~BodyReader() = default;
  virtual Step Read(std::string_view bytes) = 0;
};

/// Fetches `path` (with its query; a leading slash may lack) into `reader`. https on port 443 and where `address` says
/// so, else http. Redirects are followed within the host. Of an answer with another status only the head is read. kOk
/// means that a 200 answer ended as it should, or that `reader` has enough of it.
Outcome HttpGet(const CameraAddress& address, const std::string& path, BodyReader& reader);

}  // namespace recorder
