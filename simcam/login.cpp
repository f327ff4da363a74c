#include "simcam/login.h"

#include <glib.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "simcam/glib_handle.h"

namespace simcam {
namespace {

constexpr int kWrongLoginsBeforeLockOut = 3;
constexpr std::chrono::milliseconds kSlowRefusal{500};

std::string Hash(Scheme scheme, const std::string& text) {
  const GChecksumType type = scheme == Scheme::kDigestSha256 ? G_CHECKSUM_SHA256 : G_CHECKSUM_MD5;
  return GlibText(g_compute_checksum_for_string(type, text.data(), static_cast<gssize>(text.size()))).get();
}

/// Reads `name=value, name="quoted value"` (RFC 9110, section 11.2); names in small letters.
std::map<std::string, std::string> ReadParameters(const std::string& text) {
  std::map<std::string, std::string> parameters;
  size_t at = 0;
  while ((at = text.find_first_not_of(" \t,", at)) != std::string::npos) {
    const size_t equals = text.find('=', at);
    if (equals == std::string::npos) break;
    std::string name;
    for (const char c : text.substr(at, equals - at)) name += g_ascii_tolower(c);
    std::string value;
    at = equals + 1;
    if (at < text.size() && text[at] == '"') {
      for (++at; at < text.size() && text[at] != '"'; ++at) {
        if (text[at] == '\\' && at + 1 < text.size()) ++at;
        value += text[at];
      }
      ++at;
    } else {
      while (at < text.size() && text[at] != ',' && text[at] != ' ') value += text[at++];
    }
    parameters[name] = value;
  }
  return parameters;
}

/// The name that a login of Basic or Digest tells.
std::string UserIn(const std::string& authorization) {
  const std::string parameters = authorization.substr(std::min(authorization.find(' '), authorization.size()));
  if (!EqualNoCase(authorization.substr(0, 5), "Basic")) return ReadParameters(parameters)["username"];
  const std::string login =
      DecodeBase64(parameters.substr(std::min(parameters.find_first_not_of(' '), parameters.size())));
  return login.substr(0, login.find(':'));
}

}  // namespace

std::string Verdict::Headers() const {
  std::string headers;
  for (const std::string& challenge : challenges) headers += "WWW-Authenticate: " + challenge + "\r\n";
  return headers;
}

bool Login::Offers(Scheme scheme) const {
  for (const Scheme offered : camera_.login.offer) {
    if (offered == scheme) return true;
  }
  return false;
}

bool Login::BasicIsRight(const std::string& credentials) const {
  return Offers(Scheme::kBasic) && DecodeBase64(credentials) == camera_.user + ":" + camera_.password;
}

Login::Answer Login::JudgeNonce(const std::string& nonce, const std::string& count) {
  const auto known = nonces_.find(nonce);
  if (known == nonces_.end()) return Answer::kStale;
  if (camera_.fault.fault == Fault::kAlwaysStale) return Answer::kStale;
  if (camera_.fault.fault == Fault::kStaleNonce && !staleSent_) {
    staleSent_ = true;
    return Answer::kStale;
  }
  if (!camera_.login.qop) return Answer::kRight;
  // A count that does not grow is a replay (RFC 7616, section 5.12).
  const unsigned long number = std::strtoul(count.c_str(), nullptr, 16);
  if (count.size() != 8 || number <= known->second) return Answer::kStale;
  known->second = number;
  return Answer::kRight;
}

Login::Answer Login::JudgeDigest(const std::string& method, const std::string& target, const std::string& parameters) {
  auto given = ReadParameters(parameters);
  const Scheme scheme = given["algorithm"] == "SHA-256" ? Scheme::kDigestSha256 : Scheme::kDigestMd5;
  const bool knownAlgorithm =
      given["algorithm"].empty() || given["algorithm"] == "MD5" || given["algorithm"] == "SHA-256";
  if (!knownAlgorithm || !Offers(scheme)) return Answer::kWrong;
  if (given["username"] != camera_.user || given["realm"] != camera_.realm || given["uri"] != target)
    return Answer::kWrong;
  if ((given["qop"] == "auth") != camera_.login.qop) return Answer::kWrong;

  const std::string secret = Hash(scheme, camera_.user + ":" + camera_.realm + ":" + camera_.password);
  const std::string request = Hash(scheme, method + ":" + given["uri"]);
  std::string middle = given["nonce"];
  if (camera_.login.qop) middle += ":" + given["nc"] + ":" + given["cnonce"] + ":" + given["qop"];
  if (given["response"] != Hash(scheme, secret + ":" + middle + ":" + request)) return Answer::kWrong;
  return JudgeNonce(given["nonce"], given["nc"]);
}

Login::Answer Login::Judge(const std::string& method, const std::string& target, const std::string& authorization) {
  const size_t blank = authorization.find(' ');
  if (blank == std::string::npos) return Answer::kWrong;
  const std::string scheme = authorization.substr(0, blank);
  const std::string rest = authorization.substr(authorization.find_first_not_of(' ', blank));
  if (EqualNoCase(scheme, "Basic")) return BasicIsRight(rest) ? Answer::kRight : Answer::kWrong;
  if (EqualNoCase(scheme, "Digest")) return JudgeDigest(method, target, rest);
  return Answer::kWrong;
}

std::string Login::Challenge(Scheme scheme, const std::string& nonce, bool stale) const {
  const std::string realm = " realm=\"" + camera_.realm + "\"";
  if (scheme == Scheme::kBasic) return "Basic" + realm;
  if (scheme == Scheme::kBearer) return "Bearer" + realm;
  std::string challenge = "Digest" + realm;
  if (camera_.login.qop) challenge += ", qop=\"auth\"";
  challenge += ", nonce=\"" + nonce + "\"";
  if (scheme == Scheme::kDigestSha256) challenge += ", algorithm=SHA-256";
  if (scheme == Scheme::kDigestUnknown) challenge += ", algorithm=FOO-512";
  // Old cameras know no algorithm parameter; its absence means MD5.
  if (scheme == Scheme::kDigestMd5 && camera_.login.qop) challenge += ", algorithm=MD5";
  if (stale) challenge += ", stale=true";
  if (camera_.login.semicolons) std::replace(challenge.begin(), challenge.end(), ',', ';');
  return challenge;
}

std::vector<std::string> Login::Challenges(bool stale) {
  const std::string nonce = Hash(Scheme::kDigestMd5, RandomUuid());
  nonces_[nonce] = 0;
  std::vector<std::string> challenges;
  for (const Scheme scheme : camera_.login.offer) challenges.push_back(Challenge(scheme, nonce, stale));
  if (!camera_.login.oneHeader) return challenges;
  std::string line;
  for (const std::string& challenge : challenges) line += (line.empty() ? "" : ", ") + challenge;
  return {line};
}

Verdict Login::Conclude(Answer answer) {
  const bool locked = camera_.fault.fault == Fault::kLockOut && wrongLogins_ >= kWrongLoginsBeforeLockOut;
  if (locked) answer = Answer::kWrong;
  log_.CountLogin(answer == Answer::kRight);
  if (answer == Answer::kRight) return {};
  if (answer == Answer::kWrong) ++wrongLogins_;
  if (locked) return {403, {}};
  return {401, Challenges(answer == Answer::kStale)};
}

Verdict Login::Check(const std::string& method, const std::string& target, const std::string& authorization) {
  const std::scoped_lock lock(mutex_);
  const bool wanted = !camera_.login.offer.empty();
  if (authorization.empty()) return wanted ? Verdict{401, Challenges(false)} : Verdict{};

  Verdict verdict = Conclude(wanted ? Judge(method, target, authorization) : Answer::kRight);
  if (verdict.status != 200) log_.CountRefused(UserIn(authorization));
  if (verdict.status != 200 && camera_.login.slowRefusal) std::this_thread::sleep_for(kSlowRefusal);
  return verdict;
}

Verdict Login::Settle(bool right) {
  const std::scoped_lock lock(mutex_);
  return Conclude(right ? Answer::kRight : Answer::kWrong);
}

}  // namespace simcam
