#include "recorder/net/http_client.h"

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <memory>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

#include "recorder/net/login.h"
#include "recorder/net/text.h"
#include "recorder/utility/handle.h"
#include "recorder/utility/log.h"
#include "recorder/utility/request_scope.h"
#include "recorder/utility/text.h"
#include "recorder/utility/translate.h"

namespace recorder {
namespace {

using CurlHandle = std::unique_ptr<CURL, Deleter<curl_easy_cleanup>>;
using CurlList = std::unique_ptr<curl_slist, Deleter<curl_slist_free_all>>;
using CurlText = std::unique_ptr<char, Deleter<curl_free>>;
using UrlHandle = std::unique_ptr<CURLU, Deleter<curl_url_cleanup>>;

constexpr int kHttpsPort = 443;
constexpr int kMaxRedirects = 3;
constexpr std::size_t kMaxHeaders = std::size_t{64} << 10;     // bytes of all header lines of one answer
constexpr std::size_t kMaxUnusedBody = std::size_t{64} << 10;  // read past: libcurl tells of a redirect at the end

constexpr std::pair<CURLcode, Outcome> kCurlOutcomes[] = {
    {CURLE_OK, Outcome::kOk},
    {CURLE_URL_MALFORMAT, Outcome::kUnreachable},  // a host name or port that cannot exist
    {CURLE_COULDNT_RESOLVE_HOST, Outcome::kUnreachable},
    {CURLE_COULDNT_CONNECT, Outcome::kUnreachable},
    {CURLE_OPERATION_TIMEDOUT, Outcome::kTimedOut},           // connected or not: the user's remedy is the same
    {CURLE_UNSUPPORTED_PROTOCOL, Outcome::kNotThisProtocol},  // the answer has no HTTP status line
    {CURLE_WEIRD_SERVER_REPLY, Outcome::kNotThisProtocol},
    {CURLE_SSL_CONNECT_ERROR, Outcome::kNotThisProtocol},
};

constexpr long kOk = 200;
constexpr long kUnauthorized = 401;

constexpr std::pair<long, Outcome> kStatusOutcomes[] = {
    {kOk, Outcome::kOk},           {kUnauthorized, Outcome::kLoginRefused}, {403, Outcome::kLoginRefused},
    {404, Outcome::kNoSuchStream}, {410, Outcome::kNoSuchStream},           {429, Outcome::kBusy},
    {503, Outcome::kBusy},
};

bool IsRedirect(long status) {
  constexpr std::array<long, 5> kRedirects{301, 302, 303, 307, 308};
  return std::find(kRedirects.begin(), kRedirects.end(), status) != kRedirects.end();
}

/// Where to connect to, and what a relative redirect starts from.
UrlHandle MakeUrl(const HttpPlace& place) {
  UrlHandle url(curl_url());
  if (!url) throw std::bad_alloc();
  const std::string path = place.path.substr(0, place.path.find('?'));
  const bool isValid = curl_url_set(url.get(), CURLUPART_SCHEME, place.isTls ? "https" : "http", 0) == CURLUE_OK &&
                       curl_url_set(url.get(), CURLUPART_HOST, WithBrackets(place.host).c_str(), 0) == CURLUE_OK &&
                       curl_url_set(url.get(), CURLUPART_PORT, std::to_string(place.port).c_str(), 0) == CURLUE_OK &&
                       curl_url_set(url.get(), CURLUPART_PATH, path.c_str(), 0) == CURLUE_OK;
  if (!isValid) return nullptr;
  return url;
}

std::string UrlPart(CURLU* url, CURLUPart part, unsigned int flags = 0) {
  char* text = nullptr;
  if (curl_url_get(url, part, &text, flags) != CURLUE_OK) return "";
  return CurlText(text).get();
}

/// Requests to one place, each over a connection of its own: on one that was used before, libcurl would by itself send
/// a login again that the camera answered by closing.
class Conversation {
 public:
  Conversation(const HttpPlace& place, BodyReader& reader)
      : place_(place), url_(MakeUrl(place)), curl_(curl_easy_init()), reader_(reader) {
    if (!curl_) throw std::bad_alloc();
    SetLimits();
    SetCallbacks();
  }

  /// Sends the request, with an Authorization header unless `authorization` is "". Ends at `deadline` at the latest.
  Outcome Request(const std::string& authorization, Clock::time_point deadline) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) return Outcome::kTimedOut;
    if (!url_) return Outcome::kUnreachable;
    const CurlList headers(
        authorization.empty() ? nullptr : curl_slist_append(nullptr, ("Authorization: " + authorization).c_str()));
    answer_ = {};
    Set(CURLOPT_HTTPHEADER, headers.get());
    Set(CURLOPT_TIMEOUT_MS, static_cast<long>(left));  // 0 would mean no limit
    const CURLcode code = curl_easy_perform(curl_.get());
    Set(CURLOPT_HTTPHEADER, static_cast<curl_slist*>(nullptr));
    if (place_.isTls && authorization.empty()) ReportCertificate();
    const bool isUnanswered = (code == CURLE_GOT_NOTHING || code == CURLE_RECV_ERROR) && answer_.headerBytes == 0;
    return isUnanswered && !authorization.empty() ? Outcome::kLoginRefused : OutcomeOf(code);  // some refuse by closing
  }

  bool IsLoginWanted() const { return answer_.isWhole && Status() == kUnauthorized; }

  /// What the last answer wants as a login.
  std::vector<LoginChallenge> Challenges() const {
    return ParseChallenges({answer_.challenges.begin(), answer_.challenges.end()});
  }

  /// Where a redirecting answer leads, or "".
  std::string Location() const {
    const char* location = nullptr;
    if (answer_.isWhole && IsRedirect(Status())) curl_easy_getinfo(curl_.get(), CURLINFO_REDIRECT_URL, &location);
    return location == nullptr ? "" : location;
  }

 private:
  struct Answer {
    std::size_t headerBytes = 0;
    std::size_t unusedBytes = 0;
    std::vector<std::string> challenges;
    bool hasBody = false;
    bool isEnough = false;  ///< we ended the transfer, content with what has come
    bool isWhole = false;   ///< came as far as we wanted it
  };

  template <class Value>
  void Set(CURLoption option, Value value) {
    curl_easy_setopt(curl_.get(), option, value);
  }

  void SetLimits() {
    Set(CURLOPT_CURLU, url_.get());
    Set(CURLOPT_REQUEST_TARGET, place_.path.c_str());  // to the letter: a Digest login answers for it
    Set(CURLOPT_PROTOCOLS_STR, "http,https");
    Set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    Set(CURLOPT_PROXY, "");
    Set(CURLOPT_NOSIGNAL, 1L);
    Set(CURLOPT_FORBID_REUSE, 1L);
    Set(CURLOPT_QUICK_EXIT, 1L);  // a name lookup that hangs must not hold up the answer
    Set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(kMaxHttpBody));
    // Cameras sign their own certificates: an encrypted picture beats none, and the log says so.
    Set(CURLOPT_SSL_VERIFYPEER, 0L);
    Set(CURLOPT_SSL_VERIFYHOST, 0L);
  }

  void SetCallbacks() {
    Set(CURLOPT_HEADERFUNCTION, &Conversation::OnHeader);
    Set(CURLOPT_HEADERDATA, this);
    Set(CURLOPT_WRITEFUNCTION, &Conversation::OnBody);
    Set(CURLOPT_WRITEDATA, this);
  }

  long Status() const {
    long status = 0;
    curl_easy_getinfo(curl_.get(), CURLINFO_RESPONSE_CODE, &status);
    return status;
  }

  Outcome OutcomeOf(CURLcode code) {
    const bool isStoppedByUs = code == CURLE_WRITE_ERROR && answer_.isEnough;
    const Outcome outcome = isStoppedByUs ? Outcome::kOk : Translate(kCurlOutcomes, code, Outcome::kNotUnderstood);
    answer_.isWhole = outcome == Outcome::kOk;
    return answer_.isWhole ? Translate(kStatusOutcomes, Status(), Outcome::kNotUnderstood) : outcome;
  }

  void ReportCertificate() const {
    long result = 0;
    curl_easy_getinfo(curl_.get(), CURLINFO_SSL_VERIFYRESULT, &result);
    if (result == 0) return;
    LogFailure("Certificate of " + place_.host + ":" + std::to_string(place_.port) +
               " is from no known authority; going on.");
  }

  // The callbacks return the number of bytes taken; any other number ends the transfer. libcurl is C: nothing may be
  // thrown through it.

  static std::size_t OnHeader(const char* line, std::size_t, std::size_t length, void* self) try {
    return static_cast<Conversation*>(self)->TakeHeader(std::string_view(line, length)) ? length : 0;
  } catch (const std::bad_alloc&) {
    return 0;
  }

  static std::size_t OnBody(const char* bytes, std::size_t, std::size_t length, void* self) try {
    return static_cast<Conversation*>(self)->TakeBody(std::string_view(bytes, length)) ? length : 0;
  } catch (const std::bad_alloc&) {
    return 0;
  }

  bool TakeHeader(std::string_view line) {
    constexpr std::string_view kName = "WWW-Authenticate:";
    answer_.headerBytes += line.size();
    if (StartsWithIgnoreCase(line, kName)) answer_.challenges.emplace_back(Trimmed(line.substr(kName.size())));
    return answer_.headerBytes <= kMaxHeaders;
  }

  bool TakeBody(std::string_view bytes) {
    if (Status() != kOk) {
      answer_.unusedBytes += bytes.size();
      answer_.isEnough = answer_.unusedBytes > kMaxUnusedBody;
      return !answer_.isEnough;
    }
    BodyReader::Step step = answer_.hasBody ? BodyReader::Step::kMore : BeginBody();
    if (step == BodyReader::Step::kMore) step = reader_.Read(bytes);
    answer_.isEnough = step == BodyReader::Step::kEnough;
    return step == BodyReader::Step::kMore;
  }

  BodyReader::Step BeginBody() {
    answer_.hasBody = true;
    const char* contentType = nullptr;
    curl_easy_getinfo(curl_.get(), CURLINFO_CONTENT_TYPE, &contentType);
    return reader_.Begin(contentType == nullptr ? "" : contentType);
  }

  const HttpPlace& place_;
  UrlHandle url_;  // libcurl reads it during a request
  CurlHandle curl_;
  BodyReader& reader_;
  Answer answer_;
};

void StartCurl() {
  static const CURLcode started = curl_global_init(CURL_GLOBAL_DEFAULT);
  if (started != CURLE_OK) throw std::bad_alloc();
}

/// Answers the challenge of the last answer: once, and once more only when the camera says that its nonce was too old.
Outcome LogIn(Conversation& conversation, const HttpPlace& place, const CameraAddress& camera,
              Clock::time_point deadline) {
  constexpr int kMaxLogins = 2;
  Outcome outcome = Outcome::kLoginRefused;
  for (int logins = 0; logins < kMaxLogins && conversation.IsLoginWanted(); ++logins) {
    const std::vector<LoginChallenge> challenges = conversation.Challenges();
    const LoginChallenge* challenge = StrongestChallenge(challenges);
    if (challenge == nullptr) return Outcome::kLoginUnsupported;
    if (logins > 0 && !challenge->isStale) break;
    outcome = conversation.Request(
        AuthorizationValue(*challenge, camera.user, camera.password, "GET", place.path, {MakeClientNonce()}), deadline);
  }
  return outcome;
}

/// One contact, as far as the request still allows it. `next` is where a redirect leads.
Outcome Contact(const HttpPlace& place, const CameraAddress& camera, BodyReader& reader, std::string& next) {
  RequestScope& scope = RequestScope::Current();
  if (const auto refusal = scope.Refusal(place.host, place.port, camera.user, camera.password)) return *refusal;
  const Clock::time_point deadline = scope.Deadline();
  Conversation conversation(place, reader);
  Outcome outcome = conversation.Request("", deadline);
  if (HasLogin(camera) && conversation.IsLoginWanted()) outcome = LogIn(conversation, place, camera, deadline);
  scope.Remember(place.host, camera.user, outcome);
  next = conversation.Location();
  return outcome;
}

}  // namespace

std::optional<std::string> RequestPath(std::string_view path) {
  const auto isControl = [](char c) { return (c >= 0 && c < 0x20) || c == 0x7F; };
  if (std::any_of(path.begin(), path.end(), isControl)) return std::nullopt;
  return (path.starts_with('/') ? "" : "/") + PercentEncoded(path, kAddressSigns);
}

std::optional<HttpPlace> RedirectTarget(const HttpPlace& from, const std::string& location) {
  const UrlHandle url(curl_url());
  if (!url) throw std::bad_alloc();
  if (curl_url_set(url.get(), CURLUPART_URL, location.c_str(), 0) != CURLUE_OK) return std::nullopt;
  const std::string scheme = UrlPart(url.get(), CURLUPART_SCHEME);
  if (scheme != "http" && scheme != "https") return std::nullopt;

  HttpPlace target{scheme == "https", UrlPart(url.get(), CURLUPART_HOST), 0, ""};
  const bool isSameHost = EqualsIgnoreCase(WithoutBrackets(target.host), WithoutBrackets(from.host));
  if (!isSameHost || (from.isTls && !target.isTls)) return std::nullopt;
  target.host = from.host;

  const std::string port = UrlPart(url.get(), CURLUPART_PORT, CURLU_DEFAULT_PORT);
  std::from_chars(port.data(), port.data() + port.size(), target.port);
  const std::string query = UrlPart(url.get(), CURLUPART_QUERY);
  const auto path = RequestPath(UrlPart(url.get(), CURLUPART_PATH) + (query.empty() ? "" : "?" + query));
  if (!path) return std::nullopt;
  target.path = *path;
  return target;
}

Outcome HttpGet(const CameraAddress& address, const std::string& path, BodyReader& reader) {
  StartCurl();
  const auto requestPath = RequestPath(path);
  if (!requestPath) return Outcome::kNoSuchStream;
  HttpPlace place{address.port == kHttpsPort, address.host, address.port, *requestPath};
  for (int redirects = 0; redirects <= kMaxRedirects; ++redirects) {
    std::string location;
    const Outcome outcome = Contact(place, address, reader, location);
    if (location.empty()) return outcome;
    const auto target = RedirectTarget(place, location);
    if (!target) return Outcome::kNotUnderstood;
    RequestScope::Current().AllowPort(target->host, target->port);
    place = *target;
  }
  return Outcome::kNotUnderstood;
}

}  // namespace recorder
