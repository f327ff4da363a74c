#pragma once

#include <chrono>
#include <set>
#include <string>

#include "recorder/utility/outcome.h"
#include "tests/sessions/chance.h"

namespace sessions {

using recorder::Outcome;
using std::chrono::milliseconds;

enum class End { kStays, kSaysClose, kCloses, kResets };

/// What a camera says to a request, how it goes on, and what a session says of that unless something else comes first.
/// URI stands for the address that was asked; a length is told unless there is no body or one is told already.
struct Answer {
  std::string text;
  Outcome outcome = Outcome::kOk;
  End end = End::kStays;
  std::string track{};  ///< of a description: the address that SETUP is to name
};

struct LoginPlan {
  /// What a camera asks for, one letter each: b Basic, d Digest by MD5, s by SHA-256, u by an unknown algorithm, i with
  /// a line that it injects, n Negotiate. "" for no login.
  std::string offer;
  bool asksAtPlay = false;   ///< for it, and from then on
  bool weakens = false;      ///< it offers Basic alone the second time
  std::size_t stale = 0;     ///< right logins that are called stale
  std::string changesNonce;  ///< at the first such request, or at each
  bool changesAlways = false;
  bool saysStale = false;  ///< when it has another nonce
  bool isNonceOfConnection = false;
  End after401 = End::kStays;
  milliseconds closesAfter{0};
  bool closesOnce = false;
  bool isUnread = false;  ///< it closes the connection before it reads a login
  Answer refusal;         ///< of a wrong login; "" for another 401
  bool IsDigest() const { return offer.find_first_of("ds") != std::string::npos; }
};

/// All that is known beforehand of one session: the camera, whoever asks it, and the network between them.
struct CameraPlan {
  // Who asks.
  bool hasLogin = true;
  bool isRight = true;
  bool isThoughtSteady = false;  ///< behind a challenge
  milliseconds deadline{70'000};
  milliseconds answerBy{0};  ///< 0 for no such time
  std::size_t packetsWanted = 1;
  // The camera.
  LoginPlan login;
  Answer redirect;              ///< of DESCRIBE, "" for none; /moved leads nowhere else
  bool isRedirectOpen = false;  ///< it needs no login
  std::string optionsFirst;     ///< what DESCRIBE is answered before OPTIONS, "" for no such wish
  enum class Order { kBefore, kUnread, kBehind } optionsOrder = Order::kBehind;  ///< beside the judging of a login
  bool isOptionsOpen = true, isOptionsOfConnection = false;
  Answer describe, setup, play;
  bool hasPorts = false;  ///< whoever asks has a pair of UDP; `udp` is the answer then
  Answer udp;
  std::size_t packetsEarly = 0, packets = 1, packetSize = 1;
  milliseconds packetGap{0};
  End behindPackets = End::kStays;
  bool isFlooding = false, endsIdleSession = false, hasCseq = true, asks = false;
  // The network.
  Outcome connects = Outcome::kOk;
  milliseconds delay{0}, jitter{0};
  std::size_t piece = 0;  ///< mostly; 0 for whole answers
  bool repeats = false;
  bool isDamaged = false;  ///< an answer, at random
  std::size_t resetsAt = 0, failsAt = 0,
              stopsAt = 0;  ///< the answer or sending that a reset, a failure, a time-out meets

  /// Anything may come of it, but for what is promised of all sessions.
  bool IsLoose() const { return repeats || isDamaged; }
  /// What may come of any other.
  std::set<Outcome> Allowed() const;

 private:
  Outcome Expected() const;
  /// The answer to SETUP that counts, over UDP where the camera refuses its connection.
  bool IsUdp() const;
  Outcome OfLogin() const;
  void AllowWithLogin(std::set<Outcome>& allowed) const;
  void AllowWithOptions(std::set<Outcome>& allowed) const;
};

CameraPlan MakePlan(Chance& chance);

}  // namespace sessions
