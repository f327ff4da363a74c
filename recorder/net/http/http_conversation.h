#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "recorder/net/camera_address.h"
#include "recorder/net/http/http_place.h"
#include "recorder/net/http/http_transfer.h"
#include "recorder/net/login/login.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// Requests to one host and port of a camera, as far as the thread's RequestScope allows them, with the login that the
/// camera asks for.
class HttpConversation {
 public:
  /// `reader` must outlive the conversation. The login of `camera` counts; the path of `place` does not matter.
  HttpConversation(HttpPlace place, CameraAddress camera, AnswerReader& reader, std::size_t maxBody);

  /// One request and its answer, until `end` or the end of the RequestScope. kOk: an answer came, whatever its status.
  /// A 401 that asks for a login is answered, if MayLogIn allows it, once, and once more only when the camera says that
  /// its nonce was too old. Handed back is a 401 that comes although a login was accepted or went along in the body,
  /// and one without a challenge to a POST: its body may ask for a login of another kind. A time-out at `end` is not
  /// remembered, since it says nothing of later contacts.
  Outcome Send(const OutgoingRequest& request, Clock::time_point end = Clock::time_point::max());

  /// The last answer.
  const HttpTransfer& Answer() const { return transfer_; }

  const HttpPlace& Place() const { return place_; }

  /// Says that the camera accepted a login that the caller sent in a body.
  void LoginAccepted() { login_ = Login::kAccepted; }
  bool IsLoggedIn() const { return login_ == Login::kAccepted; }

 private:
  enum class Login {
    kNone,
    kSent,  ///< and not accepted: it is not sent again
    kAccepted,
  };

  Outcome Exchange(const OutgoingRequest& request, Clock::time_point deadline);
  Outcome Transfer(const OutgoingRequest& request, Clock::time_point deadline);
  std::optional<std::string> Authorization(const OutgoingRequest& request);
  bool IsLoginDue(const OutgoingRequest& request, const LoginChallenge& challenge, int logins) const;
  Outcome MeaningOfUnauthorized(const OutgoingRequest& request, bool isChallenged) const;

  const HttpPlace place_;
  const CameraAddress camera_;  // its port and TLS are those of the place
  HttpTransfer transfer_;
  Login login_ = Login::kNone;
  std::optional<LoginChallenge> challenge_;  // what our Authorization headers answer
  ClientNonce nonce_;
};

struct Contact {
  Outcome outcome;
  std::string location;  ///< absolute address that the answer redirects to, or ""
};

/// Makes a contact at `place`, then at each that a redirect leads to, and gives the outcome of the last. Neither the
/// host nor https is left; kNotUnderstood when a redirect would, or when there are too many.
Outcome FollowRedirects(HttpPlace place, const std::function<Contact(const HttpPlace& place)>& contact);

}  // namespace recorder
