#pragma once

#include <cstddef>
#include <string>
#include <thread>
#include <vector>

#include "recorder/utility/handle.h"

// The least that an RTSP session (RFC 2326) with a camera costs: what the recorder itself says, said again by a client
// that does nothing else.

namespace bench {

/// A session up to its first whole picture.
struct Session {
  std::vector<std::string> requests;
  std::string id;                ///< the Session of its requests
  std::size_t pictureBytes = 0;  ///< of the interleaved stream
};

/// Carries the next connection to Port() on to the camera, and keeps what both say.
class SessionRecorder {
 public:
  explicit SessionRecorder(int cameraPort);

  int Port() const;
  /// Call when the recorder has its picture.
  Session Finish();

 private:
  void Carry(int cameraPort);

  recorder::FileDescriptor listener_;
  std::vector<std::string> requests_;
  std::string received_;  // behind the last request's answer and ahead of the next request
  std::jthread thread_;
};

/// Holds the session with the camera until the picture's last byte is there. Throws NoAnswer.
void Replay(const Session& session, int cameraPort);

}  // namespace bench
