#include "recorder/device/model/path_privacy.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "recorder/device/model/path_values.h"
#include "recorder/net/percent.h"
#include "recorder/utility/secrets.h"
#include "recorder/utility/text.h"
#include "recorder/utility/whole_address.h"

namespace recorder {
namespace {

/// Calls `use` with each word of letters and digits; `isOfWord` may say what else belongs to one.
template <class IsOf, class Use>
void ForEachWord(std::string_view text, IsOf isOfWord, Use use) {
  while (!text.empty()) {
    const auto* const begin = std::find_if(text.begin(), text.end(), isOfWord);
    const auto* const end = std::find_if_not(begin, text.end(), isOfWord);
    const auto start = static_cast<std::size_t>(begin - text.begin());
    const auto size = static_cast<std::size_t>(end - begin);
    if (size > 0) use(text.substr(start, size), text.substr(start + size));
    text.remove_prefix(start + size);
  }
}

std::string FindKnown(std::string_view path, const std::vector<PrivateText>& known) {
  const auto found = std::find_if(known.begin(), known.end(), [&](const PrivateText& candidate) {
    return !candidate.text.empty() && HoldsWord(path, LowerCase(candidate.text));
  });
  return found == known.end() ? "" : std::string(found->what);
}

using KeyAndWhat = std::pair<std::string_view, std::string_view>;

/// Parts of the names of values, in lower case; the surest first.
constexpr KeyAndWhat kLoginKeys[] = {
    {"pass", "a password"},     {"pw", "a password"},   {"psw", "a password"},
    {"user", "a user name"},    {"usr", "a user name"}, {"login", "a user name"},
    {"account", "a user name"}, {"auth", "a login"},    {"cred", "a login"},
};
constexpr KeyAndWhat kOtherKeys[] = {
    {"token", "a token"},  {"session", "a token"},        {"secret", "a token"},
    {"apikey", "a token"}, {"serial", "a serial number"}, {"uuid", "a serial number"},
};
/// Whole names, which are others' as well: not with a short number.
constexpr KeyAndWhat kShortKeys[] = {{"u", "a user name"}, {"p", "a password"}, {"pin", "a password"},
                                     {"key", "a token"},   {"sid", "a token"},  {"sn", "a serial number"},
                                     {"mac", "an address"}};

template <class Range>
std::string_view WhatIsIn(std::string_view key, const Range& rows) {
  const auto* const found = std::find_if(std::begin(rows), std::end(rows), [&](const KeyAndWhat& row) {
    return key.find(row.first) != std::string_view::npos;
  });
  return found == std::end(rows) ? "" : found->second;
}

std::string_view WhatOfShort(std::string_view key) {
  const auto* const found = std::find_if(std::begin(kShortKeys), std::end(kShortKeys),
                                         [&](const KeyAndWhat& row) { return key == row.first; });
  return found == std::end(kShortKeys) ? "" : found->second;
}

/// The value behind a key, where `rest` begins with the sign in front of it.
std::string_view ValueIn(std::string_view rest) {
  rest.remove_prefix(1);
  return rest.substr(0, rest.find_first_of("&;/?"));
}

bool IsShortNumber(std::string_view value) {
  constexpr std::size_t kShort = 3;
  return value.size() <= kShort && std::all_of(value.begin(), value.end(), IsDigit);
}

bool HasValue(std::string_view rest) { return rest.starts_with('=') || rest.starts_with(':'); }

/// Whole names of nothing else than a password.
constexpr std::string_view kPasswordKeys[] = {"pass", "passwd", "password", "pwd", "psw", "pw"};

/// The login that `key` says its value to be; `rest` begins behind the key.
std::string_view LoginOf(std::string_view key, std::string_view rest) {
  const bool isPassword = std::ranges::find(kPasswordKeys, key) != std::end(kPasswordKeys);
  const bool isPart = rest.starts_with('/');
  if (!isPart && !HasValue(rest)) return "";
  const std::string_view value = ValueIn(rest);
  if (isPart) return isPassword && !value.empty() && !IsCommonValue(value) ? "a password" : "";
  if (isPassword) return value.empty() ? "" : "a password";
  if (IsShortNumber(value)) return "";
  return key == "pin" ? "a password" : WhatIsIn(key, kLoginKeys);
}

/// What `key` says that its value is. Over ONVIF a "token" is the name of a profile.
std::string_view WhatOf(std::string_view key, std::string_view rest) {
  const bool isPart = rest.starts_with('/');
  if (!isPart && !rest.starts_with('=') && !rest.starts_with(':')) return "";
  const std::string_view value = ValueIn(rest);
  const std::string_view login = WhatIsIn(key, kLoginKeys);
  const std::string_view what = login.empty() ? WhatIsIn(key, kOtherKeys) : login;
  if (what.empty()) return isPart || IsShortNumber(value) ? "" : WhatOfShort(key);
  const bool mayBeName = isPart || key.find("token") != std::string_view::npos;
  return mayBeName && IsCommonValue(value) ? "" : what;
}

/// The first that `whatOf` makes of a name and what stands behind it.
template <class What>
std::string FindNamed(std::string_view path, What whatOf) {
  std::string_view what;
  ForEachWord(
      path, [](char c) { return IsOfWord(c) || c == '_' || c == '-'; },
      [&](std::string_view key, std::string_view rest) {
        if (what.empty()) what = whatOf(key, rest);
      });
  return std::string(what);
}

/// A name and a password under short names; one of them alone may be anything.
bool HoldsShortLogin(std::string_view path) {
  const auto has = [&](std::string_view name) {
    return !FindNamed(path, [&](std::string_view key, std::string_view rest) {
              return key == name && HasValue(rest) && !IsShortNumber(ValueIn(rest)) ? name : "";
            }).empty();
  };
  return (has("u") && has("p")) || (has("un") && has("pd"));
}

/// One part of a path or, behind a question mark, of its query.
bool IsCommonPart(std::string_view part, bool isInQuery) {
  const std::size_t sign = part.find_first_of("=:");
  if (sign == std::string_view::npos) return !isInQuery || IsCommonValue(part);
  return IsCommonValue(part.substr(sign + 1));
}

std::string FindUncommon(std::string_view path) {
  bool isInQuery = false;
  while (!path.empty()) {
    const std::size_t end = std::min(path.find_first_of("/?&;"), path.size());
    if (!IsCommonPart(path.substr(0, end), isInQuery)) return "a value that is no small number and no common word";
    isInQuery = isInQuery || path.substr(end).starts_with('?');
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return "";
}

bool IsHexadecimal(std::string_view word) {
  return word.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

bool IsIpAddress(std::string_view word) { return word.find('.') != std::string_view::npos && IsNumericAddress(word); }

/// Of a network card, or of IPv6.
bool IsHexadecimalAddress(std::string_view word) {
  constexpr std::size_t kNetworkCard = 17;
  const auto colons = std::count(word.begin(), word.end(), ':');
  const auto dashes = std::count(word.begin(), word.end(), '-');
  return colons >= 2 || (dashes == 5 && word.size() == kNetworkCard);
}

/// As in "user:password@camera", but not where an '@' stands behind the host of a whole address.
std::string FindLoginOfAddress(std::string_view path) {
  if (HoldsLogin(path)) return "a login";
  if (const auto rest = BehindScheme(path)) path = rest->substr(std::min(rest->find_first_of("/?#"), rest->size()));
  const std::size_t at = path.find('@');
  const bool isThere = at != std::string_view::npos && path.substr(0, at).find(':') != std::string_view::npos;
  return isThere ? "a login" : "";
}

std::string FindAddress(std::string_view path) {
  bool isThere = path.find("://") != std::string_view::npos;
  ForEachWord(
      path, [](char c) { return IsDigit(c) || c == '.'; },
      [&](std::string_view word, std::string_view) { isThere = isThere || IsIpAddress(word); });
  ForEachWord(
      path,
      [](char c) {
        return IsHexadecimal({&c, 1}) || c == ':' || c == '-';
      },
      [&](std::string_view word, std::string_view) { isThere = isThere || IsHexadecimalAddress(word); });
  return isThere ? "an address" : "";
}

/// How often letters of one case, or digits, follow on others; a capital may begin a word of small letters.
std::size_t Changes(std::string_view word) {
  std::size_t changes = 0;
  for (std::size_t i = 1; i < word.size(); ++i) {
    const char before = word[i - 1];
    const char c = word[i];
    const bool isSame = IsDigit(before) == IsDigit(c) && IsLower(before) == IsLower(c);
    if (!isSame && !(IsUpper(before) && IsLower(c))) ++changes;
  }
  return changes;
}

/// A number of a device, an address of its network card, a key. Words that people make change seldom within.
bool IsRandom(std::string_view word) {
  constexpr std::size_t kLongNumber = 8;
  constexpr std::size_t kLongHexadecimal = 8;
  constexpr std::size_t kLongText = 16;
  const auto digits = static_cast<std::size_t>(std::count_if(word.begin(), word.end(), IsDigit));
  if (digits == word.size()) return digits >= kLongNumber;
  if (IsHexadecimal(word) && digits > 0) return word.size() >= kLongHexadecimal;
  return word.size() >= kLongText && Changes(word) * 4 >= word.size();
}

std::string FindRandom(std::string_view path) {
  bool isThere = false;
  ForEachWord(path, IsOfWord, [&](std::string_view word, std::string_view) { isThere = isThere || IsRandom(word); });
  return isThere ? "a long text without a meaning" : "";
}

/// Also what is encoded more than once: some cameras decode it as often.
std::string Decoded(std::string_view path) {
  std::string decoded(path);
  for (std::string before; before != decoded;) before = std::exchange(decoded, PercentDecoded(decoded));
  return decoded;
}

/// Whether it is more than letters, and no word or number that stands in the paths of many cameras.
bool IsTelling(std::string_view password) {
  const bool isWord = std::all_of(password.begin(), password.end(),
                                  [](char c) { return IsLower(c) || IsUpper(c) || c == '-' || c == '.'; });
  return !isWord && !IsCommonValue(password);
}

/// `path` with a small number for each placeholder.
std::string Filled(std::string path) {
  for (const std::string_view word :
       {"{channel}", "{channel0}", "{channel:02}", "{stream}", "{stream0}", "{setting}"}) {
    for (std::size_t at = path.find(word); at != std::string::npos; at = path.find(word)) {
      path.replace(at, word.size(), 1, '1');
    }
  }
  return path;
}

}  // namespace

std::string FindPrivatePart(std::string_view path, const std::vector<PrivateText>& known) {
  const std::string plain = Decoded(Filled(std::string(path)));
  const std::string lower = LowerCase(plain);
  for (std::string what : {FindKnown(lower, known), FindNamed(lower, WhatOf), FindLoginOfAddress(plain),
                           FindAddress(plain), FindRandom(plain), FindUncommon(plain)}) {
    if (!what.empty()) return what;
  }
  return "";
}

std::string FindPathLogin(std::string_view path) {
  const std::string lower = LowerCase(Decoded(Filled(std::string(path))));
  const std::string login = HoldsShortLogin(lower) ? "a login" : FindNamed(lower, LoginOf);
  return login.empty() ? FindLoginOfAddress(lower) : login;
}

bool HoldsPassword(std::string_view path, std::string_view password) {
  std::string plain = Decoded(password);
  const WipeAtEnd wipe(plain);
  return IsTelling(password) && !FindKnown(LowerCase(Decoded(path)), {{"the camera's password", plain}}).empty();
}

}  // namespace recorder
