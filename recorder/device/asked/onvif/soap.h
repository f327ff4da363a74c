#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "recorder/device/asked/onvif/names.h"
#include "recorder/device/asked/xml.h"
#include "recorder/net/camera_address.h"
#include "recorder/net/http/http_session.h"
#include "recorder/utility/outcome.h"

// SOAP 1.2 over HTTP as ONVIF speaks it; SOAP 1.1 is understood in answers.

namespace recorder::onvif {

/// What a camera answered to one request.
struct Reply {
  /// kOk: `content` is there. A fault is kLoginRefused when it is about the login, else kNotUnderstood. What is no SOAP
  /// is told by its HTTP status, or is kNotThisProtocol.
  Outcome outcome = Outcome::kNotUnderstood;
  bool isFault = false;
  bool isLoginWanted = false;  ///< the camera wants a login, or another one
  bool isLast = false;         ///< whatever else the camera were asked, it would not answer
  XmlElement content;          ///< the answer's own element in the envelope's body; lives as long as `document`
  XmlDocument document;

  /// True when a camera that speaks SOAP wrote it.
  bool IsSoap() const { return isFault || outcome == Outcome::kOk; }
};

/// Makes sense of `answer`, whose content should be the element `name` of `nameSpace`. Faults are faults with any HTTP
/// status. `isReadByName`: as XmlDocument has it.
Reply ReadReply(const HttpAnswer& answer, std::string_view nameSpace, std::string_view name,
                bool* isReadByName = nullptr);

/// An argument of a request.
std::string Element(const std::string& name, const std::string& text);

/// Requests to one camera, one after the other.
///
/// Login: none until the camera wants one: by HTTP it is the session's, by a fault it is a UsernameToken in every
///        request from then on. One wrong password is one attempt, and is remembered in the RequestScope.
/// Time, thread: as for HttpSession.
class SoapClient {
 public:
  explicit SoapClient(const CameraAddress& camera) : camera_(camera), session_(camera_) {}

  /// Asks for the camera's clock, which a UsernameToken must be dated by; our own has to do where it does not tell.
  /// Before the first token it is asked in any case.
  Reply AskClock();

  /// Says what AskClock would find, so that it is not asked: the camera's clock less ours, nothing where it did not
  /// tell.
  void TakeClock(std::optional<std::chrono::seconds> offset);

  /// The camera's clock less ours, once it told.
  std::optional<std::chrono::seconds> ClockOffset() const {
    return isClockKnown_ ? std::optional(clockOffset_) : std::nullopt;
  }

  /// True once the camera accepted a login.
  bool IsLoggedIn() const { return session_.IsLoggedIn(); }

  /// True once something that speaks SOAP answered.
  bool HasSpoken() const { return hasSpoken_; }

  /// What the software that answered last says of itself.
  ServerName Server() const { return session_.Server(); }

  /// As HttpSession has it.
  void EndBy(Clock::time_point end) { session_.EndBy(end); }

  /// Asks the service at `path` the request `name`; `arguments` is XML in the service's namespace.
  Reply Call(const std::string& path, const Service& service, const std::string& name,
             const std::string& arguments = "");

  /// True once something in an answer was found by its name alone, since the camera has it in another namespace or
  /// uses a prefix that it does not declare. Replies must not outlive this client.
  bool ReadsByName() const { return readsByName_; }

 private:
  Reply Send(const std::string& path, const Service& service, const std::string& name, const std::string& arguments);
  std::string Envelope(const Service& service, const std::string& name, const std::string& arguments) const;
  std::string Token() const;
  void EndRefused(Reply& reply) const;
  void EndUnproven(Reply& reply) const;

  const CameraAddress camera_;
  HttpSession session_;
  std::chrono::seconds clockOffset_{0};  ///< the camera's clock minus ours
  bool hasAskedClock_ = false;
  bool isClockKnown_ = false;
  bool usesToken_ = false;
  bool readsByName_ = false;
  bool hasSpoken_ = false;
};

}  // namespace recorder::onvif
