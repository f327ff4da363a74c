#include "simcam/http_camera.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <utility>

#include "simcam/motion.h"
#include "simcam/onvif/onvif.h"
#include "simcam/picture.h"
#include "simcam/psia.h"

namespace simcam {
namespace {

constexpr const char* kMovedPath = "/moved";

/// Takes "size=WxH" out of a path's query; the size, or nothing if none was asked for.
std::optional<Size> TakeSize(std::string& path) {
  const size_t query = path.find('?');
  const size_t at = query == std::string::npos ? query : path.find("size=", query);
  if (at == std::string::npos || (path[at - 1] != '?' && path[at - 1] != '&')) return std::nullopt;
  Size size{0, 0};
  std::sscanf(path.c_str() + at, "size=%5dx%5d", &size.width, &size.height);  // NOLINT(cert-err34-c): 0 if it fails
  const size_t next = path.find('&', at);
  path.erase(at, next == std::string::npos ? next : next - at + 1);
  if (path.ends_with('?') || path.ends_with('&')) path.pop_back();
  return size;
}

/// How much of a claimed 2 GB is sent.
constexpr size_t kHugePart = 5 << 20;

}  // namespace

/// One HTTP connection. Single-threaded.
class HttpCamera::Conversation {
 public:
  Conversation(HttpCamera& server, const Socket& socket, bool overTls)
      : server_(server),
        camera_(server.camera_),
        fault_(server.camera_.fault.fault),
        socket_(socket),
        entrance_{server.port_, overTls} {}

  void Run(std::string received) {
    while (open_) {
      while (const auto request = TakeRequest(received)) {
        Handle(*request);
        if (!open_) return;
      }
      open_ = socket_.Receive(received);
    }
  }

 private:
  void Handle(const Request& request) {
    if (request.version == "HTTP/1.0" || EqualNoCase(request.Header("Connection"), "close")) keepsAlive_ = false;
    std::string path = request.Path();
    for (const auto& service : server_.services_) {
      if (service->Serves(path)) return Give(request, service->Answer(request, entrance_));
    }
    server_.log_.CountRequest(request);
    if (request.method.empty()) return Answer(400, "text/plain", "bad request\n");
    for (const PageConfig& page : camera_.pages) {
      if (path == page.path) return ShowPage(request, page);
    }
    for (const PicturesConfig& pictures : camera_.pictures) {
      if (path == pictures.path) return ShowPictures(request, pictures);
    }
    const auto size = TakeSize(path);
    const bool moved = path == kMovedPath && fault_ == Fault::kRedirectSame;
    const bool snapshot = path == camera_.snapshotPath || moved;
    if (!snapshot && path != camera_.mjpegPath) {
      if (LoggedIn(request)) Answer(404, "text/plain", "no such page\n");
      return;
    }
    if (!LoggedIn(request)) return;
    if (request.method != "GET") return Answer(405, "text/plain", "only GET\n");
    if (!moved && MisbehavesInstead(request)) return;
    if (!snapshot) return SendMotion();
    if (size && !Known(*size)) return Answer(400, "text/plain", "no such size\n");
    SendPicture(TakeSnapshot(size.value_or(camera_.PictureStream().size)));
  }

  void ShowPage(const Request& request, const PageConfig& page) {
    if (page.login && !LoggedIn(request)) return;
    Answer(page.status, page.type, page.body);
  }

  void ShowPictures(const Request& request, const PicturesConfig& pictures) {
    if (!LoggedIn(request)) return;
    if (pictures.isMotion) return SendMotion();
    SendPicture(TakeSnapshot(camera_.PictureStream().size));
  }

  bool LoggedIn(const Request& request) {
    const Verdict verdict = server_.login_.Check(request.method, request.target, request.Header("Authorization"));
    if (verdict.status == 200) return true;
    Give(request, LoginAnswer(verdict));
    return false;
  }

  [[nodiscard]] bool Known(Size size) const {
    for (const StreamConfig& stream : camera_.streams) {
      if (stream.size == size) return true;
    }
    const std::vector<Size>& sizes = camera_.snapshotSizes;
    return std::find(sizes.begin(), sizes.end(), size) != sizes.end();
  }

  /// Faults that need no picture; false if there is none.
  bool MisbehavesInstead(const Request& request) {
    switch (fault_) {
      case Fault::kStatus:
        if (camera_.fault.method != "HTTP") return false;
        Answer(camera_.fault.status, "text/plain", "no\n");
        return true;
      case Fault::kWantsUserAgent:
        if (!request.Header("User-Agent").empty()) return false;
        Answer(403, "text/plain", "who are you?\n");
        return true;
      case Fault::kHtmlPage:
        Answer(200, "text/html", "<html><body>Please log in</body></html>\n");
        return true;
      case Fault::kEmptyBody:
        Answer(200, kJpegType, "");
        return true;
      case Fault::kRedirectSame:
        Answer(302, "text/plain", "", std::string("Location: ") + kMovedPath + "\r\n");
        return true;
      case Fault::kRedirectOther:
        Answer(302, "text/plain", "", "Location: " + server_.redirect_ + "\r\n");
        return true;
      case Fault::kRedirectLoop:
        Answer(302, "text/plain", "", "Location: " + request.target + "\r\n");
        return true;
      case Fault::kEndlessHeader:
        SendForEver("HTTP/1.1 200 OK\r\n", "X-More: " + std::string(1000, 'x') + "\r\n");
        return true;
      default:
        return false;
    }
  }

  void SendPicture(const std::string& jpeg) {
    const std::string half = jpeg.substr(0, jpeg.size() / 2);
    const std::string type = std::string("Content-Type: ") + kJpegType + "\r\n";
    switch (fault_) {
      case Fault::kHalfJpeg:
        return Answer(200, kJpegType, half);
      case Fault::kSilentInUnit:
        return Send(Head(200, kJpegType, jpeg.size()) + half);
      case Fault::kCloseInUnit:
        Send(Head(200, kJpegType, jpeg.size()) + half);
        open_ = false;
        return;
      case Fault::kHugeLength:
        return Send(Head(200, kJpegType, 2147483647) + jpeg);
      case Fault::kEndlessBody:
        return SendForEver("HTTP/1.1 200 OK\r\n" + type + "Connection: close\r\n\r\n" + half, std::string(1000, 'x'));
      case Fault::kDrip:
        open_ = socket_.Drip(Head(200, kJpegType, jpeg.size()) + jpeg);
        return;
      default:
        return Answer(200, kJpegType, OddJpeg(fault_, jpeg));
    }
  }

  void SendMotion() {
    Send(MotionHead(fault_));
    const Pipeline pictures = LiveJpeg(camera_.PictureStream().size, camera_.PictureStream().fps);
    bool isFirst = true;
    while (const Sample sample = open_ ? pictures.Pull() : Sample()) {
      const std::string jpeg = OddJpeg(fault_, Bytes(gst_sample_get_buffer(sample.get())));
      std::string part = MotionPart(fault_, jpeg, std::exchange(isFirst, false));
      const bool cut = fault_ == Fault::kCloseInUnit || fault_ == Fault::kSilentInUnit;
      if (cut) part.resize(part.size() / 2);
      Send(part);
      if (cut) break;
    }
    if (fault_ != Fault::kSilentInUnit) open_ = false;
  }

  [[nodiscard]] std::string Head(int status, const std::string& type, size_t size,
                                 const std::string& headers = {}) const {
    return "HTTP/1.1 " + std::to_string(status) + " " + Reason(status) + "\r\nContent-Type: " + type +
           "\r\nContent-Length: " + std::to_string(size) + "\r\n" +
           (camera_.serverName.empty() ? "" : "Server: " + camera_.serverName + "\r\n") + headers +
           (keepsAlive_ ? "" : "Connection: close\r\n") + "\r\n";
  }

  void Answer(int status, const std::string& type, const std::string& body, const std::string& headers = {}) {
    if (fault_ == Fault::kCloseWith401 && status == 401) keepsAlive_ = false;
    Send(Head(status, type, body.size(), headers) + body);
    if (!keepsAlive_) open_ = false;
  }

  /// Sends a service's answer, its troubles included. A picture has the same faults as any other.
  void Give(const Request& request, const HttpAnswer& answer) {
    if (answer.type == kJpegType) {
      if (!MisbehavesInstead(request)) SendPicture(answer.body);
      return;
    }
    switch (answer.sending) {
      case HttpAnswer::Body::kWhole:
        return Answer(answer.status, answer.type, answer.body, answer.headers);
      case HttpAnswer::Body::kEndless:
        return SendForEver("HTTP/1.1 200 OK\r\nContent-Type: " + answer.type + "\r\nConnection: close\r\n\r\n" +
                               answer.body.substr(0, answer.body.size() / 2),
                           std::string(1000, ' '));
      case HttpAnswer::Body::kHuge:
        return Send(Head(200, answer.type, 2147483647) + answer.body + std::string(kHugePart, ' '));
    }
  }

  void SendForEver(const std::string& first, const std::string& again) {
    Send(first);
    while (open_) Send(again);
  }

  void Send(const std::string& bytes) { open_ = open_ && socket_.Send(bytes); }

  HttpCamera& server_;
  const CameraConfig& camera_;
  const Fault fault_;
  const Socket& socket_;
  const Entrance entrance_;
  bool open_ = true;
  bool keepsAlive_ = true;
};

HttpCamera::HttpCamera(const CameraConfig& camera, int port, Login& login, CameraLog& log, SyncPoints& syncPoints)
    : camera_(camera), port_(port), login_(login), log_(log) {
  if (camera.onvif) services_.push_back(std::make_unique<Onvif>(camera, login, log, syncPoints));
  if (camera.psia) services_.push_back(std::make_unique<Psia>(camera, login, log));
}

void HttpCamera::Serve(const Socket& connection, std::string received, bool overTls) {
  Conversation(*this, connection, overTls).Run(std::move(received));
}

}  // namespace simcam
