#include "tests/sessions/sim_login.h"

#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <iterator>

namespace sessions {
namespace {

constexpr std::string_view kBasicValue = "Basic YWRtaW46c2VjcmV0";

std::string Hash(const EVP_MD* algorithm, const std::string& text) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::array<unsigned char, EVP_MAX_MD_SIZE> bytes{};
  unsigned int size = 0;
  EVP_Digest(text.data(), text.size(), bytes.data(), &size, algorithm, nullptr);
  std::string hex;
  for (unsigned int i = 0; i < size; ++i) hex.append({kDigits[bytes[i] >> 4], kDigits[bytes[i] & 15]});
  return hex;
}

/// A parameter of a Digest, without its quotes.
std::string Parameter(std::string_view authorization, const std::string& name) {
  const std::size_t at = authorization.find(" " + name + "=");
  if (at == std::string_view::npos) return "";
  std::string_view value = authorization.substr(at + name.size() + 2);
  const bool isQuoted = value.starts_with('"');
  if (isQuoted) value.remove_prefix(1);
  return std::string(value.substr(0, value.find(isQuoted ? '"' : ',')));
}

}  // namespace

SimLogin::Verdict SimLogin::Judge(std::string_view method, std::string_view uri, std::string_view authorization) {
  hasBegun_ |= !plan_.asksAtPlay || method == "PLAY";
  if (plan_.offer.schemes.empty() || !hasBegun_) return Verdict::kRight;
  if (authorization.empty()) return Verdict::kMissing;
  const bool isBasic = authorization.starts_with("Basic ");
  wasBasicBehindDigest_ |= isBasic && hasAskedForDigest_;
  if (isBasic ? authorization != kBasicValue : !IsRight(method, uri, authorization)) {
    ++wrong_;
    return Verdict::kWrong;
  }
  return isBasic ? Verdict::kRight : JudgeNonce(method, authorization);
}

bool SimLogin::IsRight(std::string_view method, std::string_view uri, std::string_view authorization) {
  const auto parameter = [&](const char* name) { return Parameter(authorization, name); };
  const std::string nonce = parameter("nonce");
  const EVP_MD* const algorithm = parameter("algorithm") == "SHA-256" ? EVP_sha256() : EVP_md5();
  std::string secret = Hash(algorithm, std::string(kUser) + ":" + parameter("realm") + ":" + kPassword);
  if (parameter("algorithm") == "MD5-sess") secret = Hash(algorithm, secret + ":" + nonce + ":" + parameter("cnonce"));
  std::string middle = nonce;
  if (plan_.hasQop) middle += ":" + parameter("nc") + ":" + parameter("cnonce") + ":auth";
  const std::string request = Hash(algorithm, std::string(method) + ":" + std::string(uri));
  return authorization.starts_with("Digest ") && parameter("username") == kUser && parameter("uri") == uri &&
         parameter("opaque") == "o" && parameter("response") == Hash(algorithm, secret + ":" + middle + ":" + request);
}

/// Of a login that is right: whether it comes in time, and for the first time.
SimLogin::Verdict SimLogin::JudgeNonce(std::string_view method, std::string_view authorization) {
  const auto known = nonces_.find(Parameter(authorization, "nonce"));
  if (known == nonces_.end() || known->second.realm != Parameter(authorization, "realm")) return Anew();
  if (saidStale_ < plan_.stale) {
    ++saidStale_;
    return Verdict::kStale;
  }
  if (method == plan_.changesNonce && (plan_.changesAlways || !hasChanged_)) {
    hasChanged_ = true;
    nonces_.clear();
    wrong_ += plan_.changesAlways && !plan_.saysStale ? 1 : 0;  // so it looks
    return Anew();
  }
  const std::string count = Parameter(authorization, "nc");
  if (plan_.hasQop && count <= known->second.lastCount) return Verdict::kStale;  // RFC 7616 section 5.12
  known->second.lastCount = count;
  return Verdict::kRight;
}

std::string SimLogin::Challenges(bool isStale) {
  const std::string nonce = "n" + std::to_string(++asked_);
  nonces_[nonce].realm = "r" + std::to_string(asked_ / 2);
  std::string headers;
  for (const char scheme : plan_.weakens&& asked_ > 1 ? "b" : plan_.offer.schemes) {
    const bool isJoined = plan_.isOneLine && !headers.empty();
    if (isJoined) headers.resize(headers.size() - 2);
    headers += (isJoined ? ", " : "WWW-Authenticate: ") + Challenge(scheme, nonce, isStale) + "\r\n";
  }
  hasAskedForDigest_ |= headers.find("Digest") != std::string::npos;
  return headers;
}

std::string SimLogin::Challenge(char scheme, const std::string& nonce, bool isStale) const {
  const std::string& realm = nonces_.find(nonce)->second.realm;
  if (scheme == 'n') return "Negotiate";
  if (scheme == 'b') return "Basic realm=\"" + realm + "\"";
  std::string text = "Digest realm=\"" + realm + "\", nonce=\"" + nonce + "\", opaque=\"o\"";
  if (plan_.hasQop) text += ", qop=\"auth,auth-int\"";
  if (scheme == 'm') text += ", algorithm=MD5";
  if (scheme == 's') text += ", algorithm=SHA-256";
  if (scheme == 't') text += ", algorithm=\"MD5-sess\"";
  if (scheme == 'u') text += ", algorithm=FOO-512";
  if (isStale) text += ", stale=TRUE";
  if (plan_.hasSemicolons) std::ranges::replace(text, ',', ';');
  return text;
}

}  // namespace sessions
