#pragma once

#include <string>

namespace recorder {

/// Where the video is.
struct RtspTarget {
  std::string host;
  int port = 0;
  std::string path;  ///< what follows host and port, with its query; what an address cannot hold is percent-encoded
  std::string userAgent;
  bool isTls = false;  ///< RTSP goes inside TLS (rtsps)

  /// The address as requests name it.
  std::string Uri() const;
};

}  // namespace recorder
