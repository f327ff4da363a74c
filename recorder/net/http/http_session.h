#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "recorder/net/camera_address.h"
#include "recorder/net/http/http_status.h"
#include "recorder/net/server_name.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/outcome.h"

namespace recorder {

struct HttpAnswer {
  /// kOk: an answer came whole, whatever its status (OutcomeOfHttp tells more). kLoginRefused: the camera refused the
  /// login, or wants one and we have none. kLoginUnsupported: none was sent, since the camera names no method that we
  /// know.
  Outcome outcome = Outcome::kNotUnderstood;
  long status = 0;
  std::string contentType;
  std::string body;
};

/// True for a failure of the whole conversation, after which every other request would fail alike; any other is about
/// its own request.
bool EndsConversation(Outcome outcome);

/// A conversation of several requests with the web service of one camera, one after the other, over one connection
/// that is kept alive where that is safe. https on port 443 and after a redirect to it, else http.
///
/// Thread:  one thread at a time, that of the request, whose RequestScope is asked before each request.
/// Time:    no call outlasts the deadline of the RequestScope, name lookup included.
/// Login:   as for HttpGet. Once a login was accepted it goes along with every request, and a later 401 is handed back
///          as an answer: it is about that one request.
/// Secrets: user and password go into an Authorization header and nowhere else, never into an address.
class HttpSession {
 public:
  explicit HttpSession(const CameraAddress& camera);
  ~HttpSession();
  HttpSession(const HttpSession&) = delete;
  HttpSession& operator=(const HttpSession&) = delete;

  /// Redirects within the host are followed, and stay for the requests that follow when they change port or protocol.
  HttpAnswer Get(const std::string& path);

  enum class Login {
    kByHttp,  ///< the camera's challenge is answered; a 401 without one is handed back
    kInBody,  ///< the caller put one into the body: no other goes along, and every 401 is handed back
  };
  HttpAnswer Post(const std::string& path, const std::string& contentType, const std::string& body,
                  Login login = Login::kByHttp);

  /// Ends the requests that follow at `end` at the latest. What is kTimedOut by that is not remembered.
  void EndBy(Clock::time_point end);

  /// What the software that answered last says of itself, whatever came of the request.
  ServerName Server() const;

  /// Says that the camera accepted a login that the caller sent in a body, so that the connection can be kept.
  void LoginAccepted();

  /// True once the camera accepted a login, until a redirect leads to another port.
  bool IsLoggedIn() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace recorder
