#pragma once

#include <memory>
#include <string>
#include <vector>

#include "simcam/camera_log.h"
#include "simcam/clip.h"
#include "simcam/config.h"
#include "simcam/login.h"
#include "simcam/socket.h"
#include "simcam/sync_points.h"

namespace simcam {

/// An RTSP camera (RFC 2326, RTP interleaved) that does what its configuration says, wrong things above all. Plays a
/// clip, video only. Any thread; each connection has its own.
class ScriptedRtsp {
 public:
  /// Of `syncPoints` it heeds those that come during a session.
  ScriptedRtsp(const CameraConfig& camera, Login& login, CameraLog& log, const SyncPoints& syncPoints,
               ClipStore& clips);

  /// Talks until either side ends the connection; `received` has been read already.
  void Serve(const Socket& connection, std::string received);

 private:
  const CameraConfig& camera_;
  Login& login_;
  CameraLog& log_;
  const SyncPoints& syncPoints_;
  const std::vector<StreamConfig> streams_;
  std::vector<std::shared_ptr<const RtpClip>> clips_;  ///< one for each of streams_
};

}  // namespace simcam
