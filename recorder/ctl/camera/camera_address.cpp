#include "recorder/ctl/camera/camera_address.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>
#include <vector>

#include "recorder/net/percent.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

constexpr std::pair<std::string_view, std::string_view> kSchemePorts[] = {
    {"rtsp", "554"}, {"rtsps", "322"}, {"http", "80"}, {"https", "443"}};
constexpr std::array<std::string_view, 5> kUserNames = {"user", "username", "usr", "login", "loginuse"};
constexpr std::array<std::string_view, 6> kPasswordNames = {"password", "passwd", "pass", "pwd", "psw", "loginpas"};

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsSchemeSign(char c) { return IsLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '.' || c == '-'; }

std::string_view Before(std::string_view text, std::size_t position) { return text.substr(0, position); }
std::string_view From(std::string_view text, std::size_t position) {
  return text.substr(std::min(position, text.size()));
}

/// The length of the scheme that `text` begins with, "://" included; 0 for none.
std::size_t SchemeLength(std::string_view text) {
  if (text.empty() || !IsLetter(text.front())) return 0;
  const auto end = std::find_if_not(text.begin(), text.end(), IsSchemeSign);
  const auto length = static_cast<std::size_t>(end - text.begin());
  return text.substr(length).starts_with("://") ? length + 3 : 0;
}

/// Takes off percent-encoding (RFC 3986 section 2.1). What is none, such as a bare percent sign in a password, stays.
std::string Decoded(std::string_view text) {
  const std::string decoded = PercentDecoded(text);
  return IsPercentEncoded(text) && IsUtf8(decoded) ? decoded : std::string(text);
}

/// Splits what stands between scheme or login and path.
AddressParts SplitHost(std::string_view text) {
  AddressParts parts;
  const std::size_t bracket = text.starts_with('[') ? text.find(']') : std::string_view::npos;
  const std::size_t colon = bracket == std::string_view::npos ? text.find(':') : bracket + 1;
  const bool hasPort = colon < text.size() && text[colon] == ':' &&
                       (bracket != std::string_view::npos || text.find(':', colon + 1) == std::string_view::npos);
  parts.host = WithoutBrackets(hasPort ? Before(text, colon) : text);
  if (hasPort) parts.port = text.substr(colon + 1);
  return parts;
}

std::string_view SchemePort(std::string_view scheme) {
  const std::string name = LowerCase(scheme);
  for (const auto& [known, port] : kSchemePorts) {
    if (known == name) return port;
  }
  return "";
}

/// True for a scheme that tells, and tells alone, that a path is read inside TLS.
bool IsTls(std::string_view schemeWithSlashes) { return EqualsIgnoreCase(schemeWithSlashes, "rtsps://"); }

std::string TlsAddress(const AddressParts& place, const std::string& path) {
  return "rtsps://" + WithBrackets(place.host) + ":" + place.port + (path.empty() ? "/" : path);
}

AddressParts SplitWhole(std::string_view text, std::size_t schemeLength) {
  const std::string_view rest = text.substr(schemeLength);
  const std::size_t pathBegin = rest.find_first_of("/?#");
  const std::string_view authority = Before(rest, pathBegin);
  const std::size_t at = authority.rfind('@');
  const std::string_view login = at == std::string_view::npos ? "" : Before(authority, at);
  const std::size_t colon = login.find(':');

  AddressParts parts = SplitHost(at == std::string_view::npos ? authority : authority.substr(at + 1));
  if (parts.port.empty()) parts.port = SchemePort(Before(text, schemeLength - 3));
  parts.user = Decoded(Before(login, colon));
  if (colon != std::string_view::npos) parts.password = Decoded(login.substr(colon + 1));
  const std::string_view path = From(rest, pathBegin);
  PathParts ofPath = SplitPath(path == "/" ? "" : path);
  if (parts.user.empty()) parts.user = std::move(ofPath.user);
  if (parts.password.empty()) parts.password = std::move(ofPath.password);
  const bool isTls = IsTls(Before(text, schemeLength));
  parts.path = isTls ? TlsAddress(parts, ofPath.path) : std::move(ofPath.path);
  return parts;
}

struct Parameter {
  std::string name;  ///< in lower case
  std::string_view value;
};

/// `piece` as name and value, behind at most one separator.
std::optional<Parameter> ParameterOf(std::string_view piece) {
  if (!piece.empty() && std::string_view("/?&_").find(piece.front()) != std::string_view::npos) piece.remove_prefix(1);
  const auto end = std::find_if_not(piece.begin(), piece.end(), IsLetter);
  if (end == piece.begin() || end == piece.end() || *end != '=') return std::nullopt;
  const auto length = static_cast<std::size_t>(end - piece.begin());
  return Parameter{LowerCase(Before(piece, length)), piece.substr(length + 1)};
}

template <class Names>
bool IsNamed(std::string_view piece, const Names& names) {
  const auto parameter = ParameterOf(piece);
  return parameter && std::find(names.begin(), names.end(), parameter->name) != names.end();
}

template <class Names>
std::string ValueOf(const std::vector<std::string_view>& pieces, const Names& names) {
  const auto found = std::find_if(pieces.begin(), pieces.end(), [&](auto piece) { return IsNamed(piece, names); });
  return found == pieces.end() ? "" : Decoded(ParameterOf(*found)->value);
}

/// The path in pieces, each with the separator that it begins with.
std::vector<std::string_view> PiecesOf(std::string_view path) {
  std::vector<std::string_view> pieces;
  const std::size_t query = std::min(path.find('?'), path.size());
  std::size_t begin = 0;
  for (std::size_t i = 1; i < path.size(); ++i) {
    const bool isBeforeQuery = i < query;
    const bool isSeparator = path[i] == '&' || i == query || (isBeforeQuery && path[i] == '/') ||
                             (isBeforeQuery && path[i] == '_' && ParameterOf(path.substr(i, query - i)));
    if (!isSeparator) continue;
    pieces.push_back(path.substr(begin, i - begin));
    begin = i;
  }
  pieces.push_back(path.substr(begin));
  return pieces;
}

/// What follows a login takes over the separator that the login began with.
std::string WithoutLogin(const std::vector<std::string_view>& pieces) {
  std::string path;
  std::optional<std::string> beginning;
  for (const std::string_view piece : pieces) {
    const bool isFurther = piece.starts_with('&') || piece.starts_with('_');
    if (!isFurther) beginning = piece.starts_with('/') || piece.starts_with('?') ? piece.substr(0, 1) : "";
    if (IsNamed(piece, kUserNames) || IsNamed(piece, kPasswordNames)) continue;
    path += isFurther && beginning ? *beginning + std::string(piece.substr(1)) : std::string(piece);
    beginning.reset();
  }
  return path;
}

PathParts SplitParameters(std::string_view path) {
  const std::vector<std::string_view> pieces = PiecesOf(path);
  const bool hasPassword =
      std::any_of(pieces.begin(), pieces.end(), [](auto piece) { return IsNamed(piece, kPasswordNames); });
  if (!hasPassword) return {"", "", std::string(path)};
  const std::string left = WithoutLogin(pieces);
  return {ValueOf(pieces, kUserNames), ValueOf(pieces, kPasswordNames), left.empty() ? "/" : left};
}

}  // namespace

AddressParts SplitAddress(std::string_view text) {
  const std::size_t schemeLength = SchemeLength(text);
  const std::string_view rest = text.substr(schemeLength);
  const std::size_t hostEnd = schemeLength == 0 ? 0 : rest.find_first_of("/?#");
  if (From(rest, hostEnd).find('@') != std::string_view::npos) return {std::string(text), "", "", "", ""};
  return schemeLength == 0 ? SplitHost(text) : SplitWhole(text, schemeLength);
}

PathParts SplitPath(std::string_view path) {
  const std::size_t schemeLength = SchemeLength(path);
  const std::size_t start = schemeLength != 0 ? schemeLength : std::min<std::size_t>(path.find_first_not_of('/'), 2);
  const std::string_view rest = From(path, start);
  const std::size_t end = std::min(rest.find_first_of("/?"), rest.size());
  const std::string_view authority = Before(rest, end);
  const std::size_t colon = authority.find_first_of(":@");
  const std::size_t at = authority.rfind('@');
  const bool hasLogin = at != std::string_view::npos && colon > 0 && authority[colon] == ':';
  if (!hasLogin) return SplitParameters(path);

  const std::string host = schemeLength != 0 ? "" : "/" + std::string(authority.substr(at + 1));
  PathParts parts = SplitParameters(host + std::string(rest.substr(end)));
  parts.user = Decoded(Before(authority, colon));
  parts.password = Decoded(authority.substr(colon + 1, at - colon - 1));
  if (parts.path.empty()) parts.path = "/";
  if (IsTls(Before(path, schemeLength))) parts.path = "rtsps://" + std::string(authority.substr(at + 1)) + parts.path;
  return parts;
}

}  // namespace recorder
