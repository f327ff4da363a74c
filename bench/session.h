#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "rig/proxy.h"

// The least that an RTSP session (RFC 2326) with a camera costs: what the recorder itself says, said again by a client
// that does nothing else.

namespace bench {

/// A session up to its first whole picture.
struct Session {
  std::vector<std::string> requests;
  std::string id;                ///< the Session of its requests
  std::size_t pictureBytes = 0;  ///< of the interleaved stream
};

/// The one that a recorder had through `camera` when it took a picture. Throws std::runtime_error when there was none.
Session SessionOf(const rig::Proxy& camera);

/// Holds the session with the camera until the picture's last byte is there. Throws rig::NoAnswer.
void Replay(const Session& session, int cameraPort);

}  // namespace bench
