#pragma once

#include <atomic>
#include <list>
#include <memory>
#include <string>
#include <thread>

#include "simcam/camera_log.h"
#include "simcam/clip.h"
#include "simcam/config.h"
#include "simcam/discovery.h"
#include "simcam/http_camera.h"
#include "simcam/login.h"
#include "simcam/scripted_rtsp.h"
#include "simcam/socket.h"
#include "simcam/stock_rtsp.h"
#include "simcam/tls_front.h"

namespace simcam {

/// One camera: a port of 127.0.0.1 on which RTSP and HTTP are told apart by the first request line. It serves from
/// Start() to destruction, a thread for each connection.
class Camera {
 public:
  /// Binds the port and encodes what the streams need beforehand. Throws std::runtime_error.
  Camera(CameraConfig config, ClipStore& clips);
  ~Camera();
  Camera(const Camera&) = delete;
  Camera& operator=(const Camera&) = delete;

  [[nodiscard]] const CameraConfig& Config() const { return config_; }
  [[nodiscard]] int Port() const { return listener_.Port(); }
  void SetRedirect(const std::string& address) { http_.SetRedirect(address); }
  void Start();

 private:
  struct Connection {
    Socket socket;
    int openThen = 0;  ///< connections that were open when this one came, itself included
    std::atomic<bool> over = false;
    std::jthread thread;
  };

  void AcceptAll();
  void ForgetFinished();
  [[nodiscard]] int CountOpen() const;
  void Serve(Connection& connection);
  /// Says what a broken front says to any request; false if the fault lies deeper.
  bool MisbehavesAtOnce(const Socket& socket, const Request& firstLine);

  const CameraConfig config_;
  const Socket listener_;
  CameraLog log_;
  Login login_{config_, log_};
  HttpCamera http_{config_, listener_.Port(), login_, log_};
  std::unique_ptr<StockRtsp> stock_;
  std::unique_ptr<ScriptedRtsp> scripted_;
  std::unique_ptr<TlsFront> tls_;
  std::unique_ptr<Discovery> discovery_;
  std::list<Connection> connections_;  ///< the acceptor's, and the destructor's after it
  std::jthread acceptor_;
};

}  // namespace simcam
