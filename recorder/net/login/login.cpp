#include "recorder/net/login/login.h"

#include <sodium.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <initializer_list>
#include <utility>

#include "platform/utility.h"
#include "recorder/net/login/hash.h"
#include "recorder/utility/secrets.h"
#include "recorder/utility/text.h"
#include "recorder/utility/translate.h"

namespace recorder {
namespace {

constexpr std::pair<std::string_view, LoginMethod> kDigestAlgorithms[] = {
    {"", LoginMethod::kMd5},  // RFC 7616 section 3.3: MD5 when none is named
    {"md5", LoginMethod::kMd5},
    {"sha-256", LoginMethod::kSha256},
};
constexpr std::string_view kSessionSuffix = "-sess";

/// The elements of a header value, which commas separate, or semicolons as some cameras have it; inside a quoted string
/// they do not.
std::vector<std::string_view> SplitElements(std::string_view value) {
  std::vector<std::string_view> elements;
  bool isQuoted = false;
  std::size_t begin = 0;
  for (std::size_t at = 0; at < value.size(); ++at) {
    if (isQuoted && value[at] == '\\') {
      ++at;
    } else if (value[at] == '"') {
      isQuoted = !isQuoted;
    } else if ((value[at] == ',' || value[at] == ';') && !isQuoted) {
      elements.push_back(Trimmed(value.substr(begin, at - begin)));
      begin = at + 1;
    }
  }
  elements.push_back(Trimmed(value.substr(begin)));
  return elements;
}

/// The content of a quoted string as it stands between the quotes: that is what RFC 7616 hashes and echoes.
std::string Unquoted(std::string_view value) {
  if (value.size() >= 2 && value.front() == '"' && value.back() == '"') value = value.substr(1, value.size() - 2);
  return std::string(value);
}

bool OffersAuth(std::string_view qualities) {
  const std::vector<std::string_view> offers = SplitElements(qualities);
  return std::any_of(offers.begin(), offers.end(),
                     [](std::string_view offer) { return EqualsIgnoreCase(offer, "auth"); });
}

void SetAlgorithm(LoginChallenge& challenge, std::string algorithm) {
  std::string name = LowerCase(algorithm);
  challenge.isSession = name.ends_with(kSessionSuffix);
  if (challenge.isSession) name.resize(name.size() - kSessionSuffix.size());
  challenge.method = Translate(kDigestAlgorithms, name, LoginMethod::kNone);
  challenge.algorithm = std::move(algorithm);
}

LoginChallenge StartChallenge(std::string_view scheme) {
  LoginChallenge challenge;
  challenge.isDigest = EqualsIgnoreCase(scheme, "Digest");
  if (challenge.isDigest) SetAlgorithm(challenge, "");
  if (EqualsIgnoreCase(scheme, "Basic")) challenge.method = LoginMethod::kBasic;
  return challenge;
}

void SetParameter(LoginChallenge& challenge, std::string_view key, const std::string& value) {
  if (EqualsIgnoreCase(key, "realm")) challenge.realm = value;
  if (!challenge.isDigest) return;
  if (EqualsIgnoreCase(key, "nonce")) challenge.nonce = value;
  if (EqualsIgnoreCase(key, "opaque")) challenge.opaque = value;
  if (EqualsIgnoreCase(key, "stale")) challenge.isStale = EqualsIgnoreCase(value, "true");
  if (EqualsIgnoreCase(key, "algorithm")) SetAlgorithm(challenge, value);
  if (EqualsIgnoreCase(key, "qop")) challenge.hasQop = OffersAuth(value);
}

void ParseElement(std::string_view element, std::vector<LoginChallenge>& challenges) {
  const std::size_t nameEnd = std::min(element.find_first_of(" \t="), element.size());
  std::string_view name = element.substr(0, nameEnd);
  std::string_view rest = Trimmed(element.substr(nameEnd));
  if (!rest.starts_with('=')) {  // no "key = value": a scheme begins, perhaps with its first parameter
    challenges.push_back(StartChallenge(name));
    const std::size_t keyEnd = std::min(rest.find_first_of(" \t="), rest.size());
    name = rest.substr(0, keyEnd);
    rest = Trimmed(rest.substr(keyEnd));
  }
  if (challenges.empty() || !rest.starts_with('=')) return;
  SetParameter(challenges.back(), name, Unquoted(Trimmed(rest.substr(1))));
}

/// `text` inside a quoted string. A control character cannot stand in a header line and is left out.
std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '"' || c == '\\') escaped += '\\';
    if (static_cast<unsigned char>(c) >= ' ') escaped += c;
  }
  return escaped;
}

std::string BasicValue(const std::string& user, const std::string& password) {
  std::string pair;
  pair.reserve(user.size() + 1 + password.size());  // so that it is in one place when it is wiped
  pair.append(user).append(1, ':').append(password);
  const WipeAtEnd wipe(pair);
  return "Basic " +
         HttpBase64EncodeUnsigned(reinterpret_cast<const unsigned char*>(pair.data()), static_cast<int>(pair.size()));
}

std::string CountText(unsigned int count) {
  std::array<char, 9> text{};
  std::snprintf(text.data(), text.size(), "%08x", count);
  return text.data();
}

}  // namespace

std::vector<LoginChallenge> ParseChallenges(const std::vector<std::string_view>& headerValues) {
  std::vector<LoginChallenge> challenges;
  for (const std::string_view value : headerValues) {
    for (const std::string_view element : SplitElements(value)) {
      if (!element.empty()) ParseElement(element, challenges);
    }
  }
  return challenges;
}

const LoginChallenge* StrongestChallenge(const std::vector<LoginChallenge>& challenges) {
  const auto isDigest = [](const LoginChallenge& challenge) { return challenge.isDigest; };
  const bool digestOffered = std::any_of(challenges.begin(), challenges.end(), isDigest);
  const auto strongest =
      std::max_element(challenges.begin(), challenges.end(),
                       [](const auto& left, const auto& right) { return left.method < right.method; });
  if (strongest == challenges.end() || strongest->method == LoginMethod::kNone) return nullptr;
  return digestOffered && !strongest->isDigest ? nullptr : &*strongest;
}

std::string MakeClientNonce() {
  std::array<unsigned char, 16> random{};
  randombytes_buf(random.data(), random.size());
  std::array<char, 2 * random.size() + 1> hex{};
  return sodium_bin2hex(hex.data(), hex.size(), random.data(), random.size());
}

std::string AuthorizationValue(const LoginChallenge& challenge, const std::string& user, const std::string& password,
                               std::string_view method, std::string_view uri, const ClientNonce& nonce) {
  if (challenge.method == LoginMethod::kBasic) return BasicValue(user, password);
  // In pieces, so that there is no copy of the password.
  const auto hash = [&challenge](std::initializer_list<std::string_view> pieces) {
    return HexHash(challenge.method == LoginMethod::kSha256 ? "SHA256" : "MD5", pieces);
  };
  const std::string count = CountText(nonce.count);
  std::string secret = hash({user, ":", challenge.realm, ":", password});
  if (challenge.isSession) secret = hash({secret, ":", challenge.nonce, ":", nonce.text});
  const std::string request = hash({method, ":", uri});
  const std::string response =
      challenge.hasQop ? hash({secret, ":", challenge.nonce, ":", count, ":", nonce.text, ":auth:", request})
                       : hash({secret, ":", challenge.nonce, ":", request});

  std::string value = "Digest username=\"" + Escaped(user) + "\", realm=\"" + challenge.realm + "\", nonce=\"" +
                      challenge.nonce + "\", uri=\"" + std::string(uri) + "\", response=\"" + response + '"';
  if (!challenge.algorithm.empty()) value += ", algorithm=" + challenge.algorithm;
  if (challenge.hasQop || challenge.isSession) value += ", cnonce=\"" + nonce.text + '"';
  if (challenge.hasQop) value += ", qop=auth, nc=" + count;
  if (!challenge.opaque.empty()) value += ", opaque=\"" + challenge.opaque + '"';
  return value;
}

}  // namespace recorder
