#pragma once

#include <string>

#include "simcam/camera_log.h"
#include "simcam/config.h"
#include "simcam/http_answer.h"
#include "simcam/login.h"
#include "simcam/request.h"

namespace simcam {

/// Where the camera listens, and whether a request came inside TLS.
struct Entrance {
  int port;
  bool overTls;
};

/// A service of a camera by which it is asked what it can do: all below one path, with a trouble of its own. Any
/// thread.
class HttpService {
 public:
  HttpService(const CameraConfig& camera, const char* root, Trouble trouble, Login& login, CameraLog& log)
      : camera_(camera), login_(login), log_(log), root_(root), trouble_(trouble) {}
  virtual ~HttpService() = default;
  HttpService(const HttpService&) = delete;
  HttpService& operator=(const HttpService&) = delete;

  /// True for what Answer is to be asked for.
  [[nodiscard]] bool Serves(const std::string& path) const { return path.starts_with(root_); }

  /// Counts and answers a request. What is answered well, apart from pictures, is spoilt by the trouble.
  HttpAnswer Answer(const Request& request, const Entrance& entrance);

 protected:
  virtual void Count(const Request& request) { log_.CountRequest(request); }
  /// An answer with status 200, or a refusal.
  virtual HttpAnswer AnswerWell(const Request& request, const Entrance& entrance) = 0;

  const CameraConfig& camera_;
  Login& login_;
  CameraLog& log_;

 private:
  const char* root_;
  const Trouble trouble_;
};

/// The rates that a stream can be set to, as a list: the fastest, then the usual slower ones, each times `factor`.
std::string RatesUpTo(int fastest, int factor, const char* separator);

}  // namespace simcam
