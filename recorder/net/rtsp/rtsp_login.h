#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "recorder/net/login/login.h"
#include "recorder/net/rtsp/rtsp_parser.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// Whom a session logs in as, and when it may.
class RtspLogins {
 public:
  virtual ~RtspLogins() = default;
  /// False when there is nothing to log in with.
  virtual bool HasLogin() const = 0;
  /// Says what the camera asks for.
  virtual void Remember(const std::vector<LoginChallenge>& challenges) = 0;
  virtual bool MayLogIn(LoginMethod method) = 0;
  /// Value of the Authorization header of one request, the `use`th that answers `challenge`. Nothing where no password
  /// is to be had.
  virtual std::optional<std::string> Authorization(const LoginChallenge& challenge, std::string_view method,
                                                   std::string_view uri, unsigned int use) = 0;
  /// Says that the camera took a login.
  virtual void Worked(LoginMethod method) = 0;
  /// True where the camera at `port` is known to keep its connection open behind a challenge.
  virtual bool IsSteady(int port) const = 0;
  /// Says whether it did so just now; where it closed over a login, that counts as no.
  virtual void RememberSteady(int port, bool isSteady) = 0;
  /// Says that the camera has named a port of its host, where a login is for that camera, too.
  virtual void AllowPort(int port) = 0;
};

/// The login of one RTSP session: what the camera challenged with, and whether it has taken what we answered. It goes
/// along with all requests from the first challenge on. A wrong password is one attempt: a login goes out again only
/// where the camera cannot have read it, says that its nonce was stale, or has taken one before.
///
/// Owner:   `logins` must outlive it.
/// Thread:  one at a time.
class RtspLogin {
 public:
  explicit RtspLogin(RtspLogins& logins) : logins_(logins) {}

  /// Another request begins.
  void BeginRequest() { tries_ = 0; }
  /// Another connection begins.
  void BeginConnection() { wasChallengedHere_ = false; }
  /// Another server begins, which has challenged with nothing yet.
  void BeginServer();

  /// Takes the challenge of a camera that refused the request. kOk: the request is to go out again, with a login.
  Outcome Take(const RtspMessage& refusal);

  /// Value of the Authorization header; "" for none yet, nothing where no password is to be had.
  std::optional<std::string> Authorization(std::string_view method, std::string_view uri);
  /// Says that the request has gone out.
  void Sent();

  /// True while what the camera does next tells whether it takes the login.
  bool IsOnTrial() const { return state_ == State::kSent || state_ == State::kRepeated; }
  /// True from when it was sent until the camera has taken it.
  bool IsUnproven() const { return IsOnTrial() || state_ == State::kAnswered; }
  /// True once the camera asked for a login.
  bool IsWanted() const { return state_ != State::kNone; }
  /// True once it asked for one for this very request.
  bool IsWantedHere() const { return tries_ > 0; }

  /// Says that the camera at `port` has taken the login.
  void Prove(int port);
  /// Says that the camera answered it, without yes or no: some look at the path before the password.
  void Answered();
  /// The camera closed the connection before it read the login. True: it is to go out again, over another one.
  bool MayRepeat();
  /// The camera closed the connection behind its challenge, which may have ended with that. The first time it is
  /// dropped; a camera that closes behind each is answered over a connection of its own.
  void DropChallenge();

 private:
  enum class State {
    kNone,
    kChallenged,  ///< the camera asked for it
    kSent,
    kRepeated,  ///< sent once more, since the camera closed the connection before it read it
    kAnswered,  ///< the camera said something else than no
    kProven,    ///< the camera took it
  };

  Outcome Choose(const std::vector<LoginChallenge>& challenges);

  RtspLogins& logins_;
  State state_ = State::kNone;
  LoginChallenge challenge_;  // unless the state is kNone
  unsigned int nonceUses_ = 0;
  int tries_ = 0;                   // of the request with a login, by what the camera answered
  bool wasChallengedHere_ = false;  // over this connection
  bool hasDropped_ = false;         // a challenge
};

}  // namespace recorder
