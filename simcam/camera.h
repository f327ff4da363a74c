#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>

#include "simcam/acceptor.h"
#include "simcam/camera_log.h"
#include "simcam/clip.h"
#include "simcam/config.h"
#include "simcam/http_camera.h"
#include "simcam/login.h"
#include "simcam/mdns.h"
#include "simcam/onvif/discovery.h"
#include "simcam/scripted_rtsp.h"
#include "simcam/socket.h"
#include "simcam/stock_rtsp.h"
#include "simcam/sync_points.h"
#include "simcam/tls_front.h"

namespace simcam {

/// One camera: a port of a loopback address on which TLS is told by its first byte, and RTSP and HTTP by the first
/// request line. It serves from Start() to destruction.
class Camera {
 public:
  /// Binds the port and encodes what the streams need beforehand. Throws std::runtime_error.
  Camera(CameraConfig config, ClipStore& clips);

  [[nodiscard]] const CameraConfig& Config() const { return config_; }
  [[nodiscard]] int Port() const { return listener_.Port(); }
  void SetRedirect(const std::string& address) { http_.SetRedirect(address); }
  void Start();

 private:
  /// `openThen`: connections that were open when this one came, itself included.
  void Welcome(Socket& socket, int openThen);
  void Serve(Socket& socket, int openThen, bool overTls);
  bool IsForTests(const std::string& target);
  /// Says what a broken front says to any request; false if the fault lies deeper.
  bool MisbehavesAtOnce(const Socket& socket, const Request& firstLine);

  const CameraConfig config_;
  const Socket listener_;
  CameraLog log_;
  std::atomic<bool> isDown_ = false;
  Login login_{config_, log_};
  SyncPoints syncPoints_;
  HttpCamera http_{config_, listener_.Port(), login_, log_, syncPoints_};
  std::unique_ptr<StockRtsp> stock_;
  std::unique_ptr<ScriptedRtsp> scripted_;
  std::unique_ptr<TlsFront> tls_;
  std::unique_ptr<Discovery> discovery_;
  std::unique_ptr<Mdns> mdns_;
  std::optional<Acceptor> acceptor_;
};

}  // namespace simcam
