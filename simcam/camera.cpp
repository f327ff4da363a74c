#include "simcam/camera.h"

#include <random>
#include <sstream>
#include <utility>

namespace simcam {
namespace {

constexpr const char* kLogPath = "/sim/log";
constexpr const char* kDownPath = "/sim/down";
constexpr const char* kUpPath = "/sim/up";

/// Method, target and version of the first line; nothing as long as it is not complete.
std::optional<Request> FirstLine(const std::string& received) {
  const size_t end = received.find('\n');
  if (end == std::string::npos) return std::nullopt;
  Request request;
  std::istringstream words(received.substr(0, end));
  words >> request.method >> request.target >> request.version;
  return request;
}

void SendLog(const Socket& socket, const CameraLog& log) {
  const std::string json = log.ToJson();
  static_cast<void>(
      socket.Send("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nConnection: close\r\nContent-Length: " +
                  std::to_string(json.size()) + "\r\n\r\n" + json));
}

void SendGarbage(const Socket& socket) {
  std::random_device random;
  std::string bytes;
  for (int i = 0; i < 3000; ++i) bytes += static_cast<char>(random());
  static_cast<void>(socket.Send(bytes));
}

void WaitForEnd(const Socket& socket) {
  std::string ignored;
  while (socket.Receive(ignored)) ignored.clear();
}

/// What RTSP servers say to a request of HTTP: a head without a length, behind which the connection stays open.
void AnswerGet(const Socket& socket, int status) {
  if (status != 0) {
    const std::string head = "HTTP/1.0 " + std::to_string(status) + " " + Reason(status) + "\r\n\r\n";
    static_cast<void>(socket.Send(head));
  }
  WaitForEnd(socket);
}

bool LeadsToTls(const CameraConfig& config) {
  return (config.onvif && config.onvif->trouble == Trouble::kRedirectTls) ||
         (config.psia && config.psia->trouble == Trouble::kRedirectTls);
}

}  // namespace

Camera::Camera(CameraConfig config, ClipStore& clips)
    : config_(std::move(config)), listener_(Socket::Bind(config_.address, config_.port)) {
  if (config_.server == Server::kStock) {
    stock_ = std::make_unique<StockRtsp>(config_, login_, log_, clips);
  } else {
    scripted_ = std::make_unique<ScriptedRtsp>(config_, login_, log_, syncPoints_, clips);
  }
}

void Camera::Start() {
  if (config_.fault.fault == Fault::kRefused) return;
  if (config_.tls != TlsUse::kNone || LeadsToTls(config_)) tls_ = std::make_unique<TlsFront>();
  if (config_.discovery) discovery_ = std::make_unique<Discovery>(config_, Port());
  if (config_.mdns) mdns_ = std::make_unique<Mdns>(config_.name, Port());
  acceptor_.emplace(listener_, [this](int open) {
    log_.CountConnection();
    // What GStreamer's server has taken over is no socket of the acceptor's any more.
    const int openThen = open + (stock_ ? stock_->CountOpen() : 0);
    return [this, openThen](Socket& socket) { Welcome(socket, openThen); };
  });
}

void Camera::Welcome(Socket& socket, int openThen) {
  if (!TlsFront::IsWanted(socket)) return Serve(socket, openThen, false);
  if (tls_) tls_->Relay(socket, [this, openThen](Socket& plain) { Serve(plain, openThen, true); });
}

void Camera::Serve(Socket& socket, int openThen, bool overTls) {
  std::string received;
  std::optional<Request> first;
  while (!(first = FirstLine(received)) && socket.Receive(received)) continue;
  if (first && IsForTests(first->target)) {
    log_.CountConnection(-1);
    return SendLog(socket, log_);
  }
  log_.CountOpen(openThen);
  if (!first || (config_.tls == TlsUse::kOnly && !overTls)) return;
  if (isDown_) return WaitForEnd(socket);
  if (MisbehavesAtOnce(socket, *first)) return;
  if (!first->IsRtsp()) return http_.Serve(socket, std::move(received), overTls);
  if (scripted_) return scripted_->Serve(socket, std::move(received));
  stock_->Adopt(std::move(socket), received);
}

/// Whether it is no request of a client's; does what it asks for.
bool Camera::IsForTests(const std::string& target) {
  if (target == kDownPath) isDown_ = true;
  if (target == kUpPath) isDown_ = false;
  return target == kDownPath || target == kUpPath || target == kLogPath;
}

bool Camera::MisbehavesAtOnce(const Socket& socket, const Request& firstLine) {
  const auto say = [&](const char* text) {
    log_.CountRequest(firstLine);
    static_cast<void>(socket.Send(text));
    return true;
  };
  const bool mayAnswerGet = config_.fault.method == "GET" || config_.fault.fault == Fault::kGetSilent;
  if (mayAnswerGet && !firstLine.IsRtsp()) {
    AnswerGet(socket, config_.fault.status);
    return true;
  }
  switch (config_.fault.fault) {
    case Fault::kSilentAfterConnect:
      log_.CountRequest(firstLine);
      WaitForEnd(socket);
      return true;
    case Fault::kCloseAfterConnect:
      return say("");
    case Fault::kGarbage:
      log_.CountRequest(firstLine);
      SendGarbage(socket);
      return true;
    case Fault::kNotRtsp:
      return firstLine.IsRtsp() && say("HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    case Fault::kNotHttp:
      return !firstLine.IsRtsp() && say("RTSP/1.0 400 Bad Request\r\n\r\n");
    default:
      return false;
  }
}

}  // namespace simcam
