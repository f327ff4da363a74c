#include "recorder/device/model/path_privacy.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "recorder/net/percent.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsLower(char c) { return c >= 'a' && c <= 'z'; }
bool IsUpper(char c) { return c >= 'A' && c <= 'Z'; }
bool IsOfWord(char c) { return IsDigit(c) || IsLower(c) || IsUpper(c); }

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

// --- Known texts ----------------------------------------------------------------------------------------------------

bool HoldsWord(std::string_view text, std::string_view word) {
  for (std::size_t at = text.find(word); at != std::string_view::npos; at = text.find(word, at + 1)) {
    const std::size_t end = at + word.size();
    const bool beginsThere = at == 0 || !IsOfWord(text[at - 1]) || !IsOfWord(word.front());
    const bool endsThere = end == text.size() || !IsOfWord(text[end]) || !IsOfWord(word.back());
    if (beginsThere && endsThere) return true;
  }
  return false;
}

std::string FindKnown(std::string_view path, const std::vector<PrivateText>& known) {
  const auto found = std::find_if(known.begin(), known.end(), [&](const PrivateText& candidate) {
    return !candidate.text.empty() && HoldsWord(path, candidate.text);
  });
  return found == known.end() ? "" : std::string(found->what);
}

// --- Names of values ------------------------------------------------------------------------------------------------

using KeyAndWhat = std::pair<std::string_view, std::string_view>;

/// Parts of a name in front of "=", in lower case; the surest first.
constexpr KeyAndWhat kKeys[] = {
    {"pass", "a password"},        {"pwd", "a password"},       {"psw", "a password"},      {"user", "a user name"},
    {"usr", "a user name"},        {"login", "a user name"},    {"account", "a user name"}, {"auth", "a login"},
    {"token", "a token"},          {"session", "a token"},      {"secret", "a token"},      {"apikey", "a token"},
    {"serial", "a serial number"}, {"uuid", "a serial number"},
};

/// Words that profiles are called by.
constexpr std::string_view kProfileWords[] = {"profile", "stream", "main", "sub", "media", "video"};

template <class Range>
bool HoldsAny(std::string_view text, const Range& words) {
  return std::any_of(std::begin(words), std::end(words),
                     [&](std::string_view word) { return text.find(word) != std::string_view::npos; });
}

/// Over ONVIF a "token" is the name of a profile.
bool IsProfileName(std::string_view value) {
  constexpr std::size_t kShort = 3;
  return value.size() <= kShort || HoldsAny(value, kProfileWords);
}

/// What `key` says that its value is; `rest` begins behind the key.
std::string_view WhatOf(std::string_view key, std::string_view rest) {
  if (!rest.starts_with('=')) return "";
  rest.remove_prefix(1);
  const std::string_view value = rest.substr(0, rest.find_first_of("&;/?"));
  const auto* const found = std::find_if(std::begin(kKeys), std::end(kKeys), [&](const KeyAndWhat& row) {
    return key.find(row.first) != std::string_view::npos;
  });
  if (found == std::end(kKeys)) return "";
  return found->first == "token" && IsProfileName(value) ? "" : found->second;
}

std::string FindNamed(const std::string& path) {
  std::string_view what;
  ForEachWord(
      path, [](char c) { return IsOfWord(c) || c == '_' || c == '-'; },
      [&](std::string_view key, std::string_view rest) {
        if (what.empty()) what = WhatOf(key, rest);
      });
  return std::string(what);
}

// --- Addresses and random texts -------------------------------------------------------------------------------------

bool IsIpAddress(std::string_view word) { return word.find('.') != std::string_view::npos && IsNumericAddress(word); }

std::string FindAddress(std::string_view path) {
  const std::size_t at = path.find('@');
  if (at != std::string_view::npos && path.substr(0, at).find(':') != std::string_view::npos) return "a login";
  bool isThere = path.find("://") != std::string_view::npos;
  ForEachWord(
      path, [](char c) { return IsDigit(c) || c == '.'; },
      [&](std::string_view word, std::string_view) { isThere = isThere || IsIpAddress(word); });
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

bool IsHexadecimal(std::string_view word) {
  return word.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

/// A number of a device, an address of its network card, a key. Words that people make change seldom within.
bool IsRandom(std::string_view word) {
  constexpr std::size_t kLongNumber = 8;
  constexpr std::size_t kLongHexadecimal = 12;
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

}  // namespace

std::string FindPrivatePart(std::string_view path, const std::vector<PrivateText>& known) {
  const std::string decoded = PercentDecoded(path);
  for (std::string what :
       {FindKnown(decoded, known), FindNamed(LowerCase(decoded)), FindAddress(decoded), FindRandom(decoded)}) {
    if (!what.empty()) return what;
  }
  return "";
}

}  // namespace recorder
