#pragma once

#include <memory>
#include <string>

#include "simcam/camera_log.h"
#include "simcam/clip.h"
#include "simcam/config.h"
#include "simcam/login.h"
#include "simcam/socket.h"

namespace simcam {

/// A healthy camera's RTSP, by GStreamer's RTSP server; the login is ours, since that server knows no SHA-256.
/// Pictures are encoded while somebody watches. Needs a running default GLib main loop. Any thread.
class StockRtsp {
 public:
  StockRtsp(const CameraConfig& camera, Login& login, CameraLog& log, ClipStore& clips);
  ~StockRtsp();
  StockRtsp(const StockRtsp&) = delete;
  StockRtsp& operator=(const StockRtsp&) = delete;

  /// Takes over a connection of which `received` has been read already.
  void Adopt(Socket connection, const std::string& received);
  /// The connections taken over that neither side has ended.
  [[nodiscard]] int CountOpen();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace simcam
