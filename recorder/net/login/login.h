#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "recorder/utility/login_method.h"

namespace recorder {

/// One challenge of a WWW-Authenticate header (RFC 7235; Basic RFC 7617, Digest RFC 7616 and RFC 2069).
struct LoginChallenge {
  LoginMethod method = LoginMethod::kNone;
  bool isDigest = false;
  bool isSession = false;  ///< an algorithm that ends in "-sess"
  bool isStale = false;    ///< the login was right, its nonce too old
  bool hasQop = false;     ///< "auth" is among its qualities of protection; without, the old form is answered
  std::string realm;
  std::string nonce;
  std::string opaque;
  std::string algorithm;  ///< as the camera wrote it, "" when it did not
};

/// All challenges of an answer's WWW-Authenticate values: a value may hold several, and one that is not understood does
/// not hide the next.
std::vector<LoginChallenge> ParseChallenges(const std::vector<std::string_view>& headerValues);

/// The strongest challenge that we can answer, or null. Once a Digest is offered, Basic is not taken: somebody on
/// the way who removes the Digest that we could answer would be shown the password.
const LoginChallenge* StrongestChallenge(const std::vector<LoginChallenge>& challenges);

/// The part of a Digest that the client chooses.
struct ClientNonce {
  std::string text;
  unsigned int count = 1;  ///< how often the server's nonce was used, this use included
};

/// A fresh random client nonce of 128 bits.
std::string MakeClientNonce();

/// Value of the Authorization header that answers `challenge` for one request.
std::string AuthorizationValue(const LoginChallenge& challenge, const std::string& user, const std::string& password,
                               std::string_view method, std::string_view uri, const ClientNonce& nonce);

}  // namespace recorder
