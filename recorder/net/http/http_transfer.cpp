#include "recorder/net/http/http_transfer.h"

#include <unistd.h>

#include <algorithm>
#include <new>
#include <utility>

#include "recorder/net/http/http_status.h"
#include "recorder/net/socket.h"
#include "recorder/net/tls_socket.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"
#include "recorder/utility/translate.h"

namespace recorder {
namespace {

constexpr std::pair<CURLcode, Outcome> kCurlOutcomes[] = {
    {CURLE_OK, Outcome::kOk},
    {CURLE_URL_MALFORMAT, Outcome::kUnreachable},             // a host name or port that cannot exist
    {CURLE_OPERATION_TIMEDOUT, Outcome::kTimedOut},           // connected or not: the user's remedy is the same
    {CURLE_UNSUPPORTED_PROTOCOL, Outcome::kNotThisProtocol},  // the answer has no HTTP status line
    {CURLE_WEIRD_SERVER_REPLY, Outcome::kNotThisProtocol},
    {CURLE_SSL_CONNECT_ERROR, Outcome::kNotThisProtocol},
};

CurlHandle MakeCurl() {
  static const CURLcode started = curl_global_init(CURL_GLOBAL_DEFAULT);
  CurlHandle curl(started == CURLE_OK ? curl_easy_init() : nullptr);
  if (!curl) throw std::bad_alloc();
  return curl;
}

/// Where to connect to; nothing when there can be no such place.
UrlHandle MakeUrl(const HttpPlace& place) {
  UrlHandle url(curl_url());
  if (!url) throw std::bad_alloc();
  const bool isValid = curl_url_set(url.get(), CURLUPART_SCHEME, place.isTls ? "https" : "http", 0) == CURLUE_OK &&
                       curl_url_set(url.get(), CURLUPART_HOST, WithBrackets(place.host).c_str(), 0) == CURLUE_OK &&
                       curl_url_set(url.get(), CURLUPART_PORT, std::to_string(place.port).c_str(), 0) == CURLUE_OK;
  if (!isValid) return nullptr;
  return url;
}

CurlList MakeHeaders(const OutgoingRequest& request, const std::string& authorization) {
  CurlList lines;
  if (!authorization.empty()) Append(lines, "Authorization: " + authorization);
  if (request.isPost) {
    Append(lines, "Content-Type: " + request.contentType);
    Append(lines, "Expect:");  // libcurl would ask first whether to send a long body: many cameras never answer that
  }
  return lines;
}

/// What a Location header stands for in an answer of `here`. What cannot be read stays as it is.
std::string WholeAddress(const UrlHandle& here, const std::string& location) {
  constexpr unsigned int kFlags = CURLU_NON_SUPPORT_SCHEME | CURLU_ALLOW_SPACE;
  const UrlHandle url(curl_url_dup(here.get()));
  const bool isRead = url && curl_url_set(url.get(), CURLUPART_URL, location.c_str(), kFlags) == CURLUE_OK;
  return isRead ? PartOf(url, CURLUPART_URL).value_or(location) : location;
}

}  // namespace

HttpTransfer::HttpTransfer(const HttpPlace& place, AnswerReader& reader, std::size_t maxBody, CertificateCheck check)
    : place_(place), reader_(reader), check_(std::move(check)), url_(MakeUrl(place)), curl_(MakeCurl()) {
  SetProtocol();
  SetLimits(maxBody);
  SetConnecting();
  SetCallbacks();
}

Outcome HttpTransfer::Perform(const OutgoingRequest& request, const std::string& authorization, Connection connection,
                              Clock::time_point deadline) {
  answer_ = {};
  connected_ = Outcome::kOk;
  deadline_ = deadline;
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
  if (left <= 0) return Outcome::kTimedOut;
  if (!url_) return Outcome::kUnreachable;
  SetTarget(request.path);
  SetBody(request);
  Set(CURLOPT_FRESH_CONNECT, connection == Connection::kKeep ? 0L : 1L);
  Set(CURLOPT_FORBID_REUSE, connection == Connection::kClose ? 1L : 0L);
  Set(CURLOPT_TIMEOUT_MS, static_cast<long>(left));  // 0 would mean no limit
  const CurlList headers = MakeHeaders(request, authorization);
  Set(CURLOPT_HTTPHEADER, headers.get());
  const CURLcode code = curl_easy_perform(curl_.get());
  Set(CURLOPT_HTTPHEADER, static_cast<curl_slist*>(nullptr));
  Count();
  return OutcomeOf(code);
}

long HttpTransfer::Status() const {
  long status = 0;
  curl_easy_getinfo(curl_.get(), CURLINFO_RESPONSE_CODE, &status);
  return status;
}

std::string HttpTransfer::ContentType() const {
  const char* contentType = nullptr;
  curl_easy_getinfo(curl_.get(), CURLINFO_CONTENT_TYPE, &contentType);
  return contentType == nullptr ? "" : contentType;
}

std::vector<LoginChallenge> HttpTransfer::Challenges() const {
  return ParseChallenges({answer_.challenges.begin(), answer_.challenges.end()});
}

ServerName HttpTransfer::Server() const {
  const std::vector<LoginChallenge> challenges = Challenges();
  return {answer_.server, challenges.empty() ? "" : challenges.front().realm};
}

std::string HttpTransfer::Location() const {
  const bool leadsOn = answer_.isWhole && IsRedirect(Status());
  return leadsOn ? WholeAddress(url_, answer_.location) : "";
}

void HttpTransfer::SetProtocol() {
  Set(CURLOPT_PROTOCOLS_STR, "http,https");
  Set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  Set(CURLOPT_PROXY, "");
  Set(CURLOPT_USERAGENT, "recorder");  // some cameras refuse a client that does not name itself
  Append(statusLines_, "ICY 200 OK");  // as servers of audio streams answer, and some cameras
  Set(CURLOPT_HTTP200ALIASES, statusLines_.get());
}

void HttpTransfer::SetLimits(std::size_t maxBody) {
  Set(CURLOPT_NOSIGNAL, 1L);
  Set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(maxBody));
  // Cameras sign their own certificates: OnConnected judges them.
  Set(CURLOPT_SSL_VERIFYPEER, 0L);
  Set(CURLOPT_SSL_VERIFYHOST, 0L);
}

/// libcurl gets a connection that is made already. It believes that it goes to an address that needs no lookup.
void HttpTransfer::SetConnecting() {
  Append(connectTo_, "::127.0.0.1:");
  Set(CURLOPT_CONNECT_TO, connectTo_.get());
  Set(CURLOPT_OPENSOCKETFUNCTION, &HttpTransfer::OnOpenSocket);
  Set(CURLOPT_OPENSOCKETDATA, this);
  Set(CURLOPT_SOCKOPTFUNCTION, &HttpTransfer::OnSocketOpened);
  Set(CURLOPT_CLOSESOCKETFUNCTION, &HttpTransfer::OnCloseSocket);
  Set(CURLOPT_CLOSESOCKETDATA, this);
  Set(CURLOPT_PREREQFUNCTION, &HttpTransfer::OnConnected);
  Set(CURLOPT_PREREQDATA, this);
}

void HttpTransfer::SetCallbacks() {
  Set(CURLOPT_HEADERFUNCTION, &HttpTransfer::OnHeader);
  Set(CURLOPT_HEADERDATA, this);
  Set(CURLOPT_WRITEFUNCTION, &HttpTransfer::OnBody);
  Set(CURLOPT_WRITEDATA, this);
  Set(CURLOPT_XFERINFOFUNCTION, &HttpTransfer::OnProgress);
  Set(CURLOPT_XFERINFODATA, this);
  Set(CURLOPT_NOPROGRESS, 0L);
}

void HttpTransfer::SetTarget(const std::string& path) {
  const std::string withoutQuery = path.substr(0, path.find('?'));
  curl_url_set(url_.get(), CURLUPART_PATH, withoutQuery.c_str(), 0);  // what a relative redirect starts from
  Set(CURLOPT_CURLU, url_.get());
  Set(CURLOPT_REQUEST_TARGET, path.c_str());  // to the letter: a Digest login answers for it
}

void HttpTransfer::SetBody(const OutgoingRequest& request) {
  if (!request.isPost) {
    Set(CURLOPT_HTTPGET, 1L);
    return;
  }
  Set(CURLOPT_POST, 1L);
  Set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
  Set(CURLOPT_COPYPOSTFIELDS, request.body.c_str());
}

Outcome HttpTransfer::OutcomeOf(CURLcode code) {
  const bool isStoppedByUs = code == CURLE_WRITE_ERROR && answer_.isEnough;
  Outcome outcome = isStoppedByUs ? Outcome::kOk : Translate(kCurlOutcomes, code, Outcome::kNotUnderstood);
  if (connected_ != Outcome::kOk) outcome = connected_;  // libcurl knows only that there is no connection
  answer_.isWhole = outcome == Outcome::kOk;
  answer_.isUnanswered = (code == CURLE_GOT_NOTHING || code == CURLE_RECV_ERROR) && answer_.headerBytes == 0;
  return outcome;
}

// libcurl is C: nothing may be thrown through it.

curl_socket_t HttpTransfer::OnOpenSocket(void* self, curlsocktype, curl_sockaddr*) try {
  auto& transfer = *static_cast<HttpTransfer*>(self);
  FileDescriptor connection;
  transfer.connected_ = ConnectTo(transfer.place_.host, transfer.place_.port, transfer.deadline_, connection);
  if (!connection) return CURL_SOCKET_BAD;
  transfer.counted_ = 0;
  return transfer.connection_ = connection.Release();
} catch (const std::bad_alloc&) {
  return CURL_SOCKET_BAD;
}

int HttpTransfer::OnCloseSocket(void* self, curl_socket_t connection) {
  auto& transfer = *static_cast<HttpTransfer*>(self);
  OnProgress(self, 0, 0, 0, 0);
  if (transfer.connection_ == connection) transfer.connection_ = -1;
  return close(connection);
}

int HttpTransfer::OnConnected(void* self, char*, char*, int, int) try {
  auto& transfer = *static_cast<HttpTransfer*>(self);
  if (transfer.place_.isTls) transfer.connected_ = transfer.check_(transfer.Certificate());
  const bool mayAsk = transfer.connected_ == Outcome::kOk;
  if (mayAsk && !RequestScope::Current().TakeRequest()) transfer.connected_ = Outcome::kTimedOut;
  return transfer.connected_ == Outcome::kOk ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
} catch (const std::bad_alloc&) {
  return CURL_PREREQFUNC_ABORT;
}

/// "" for none.
std::string HttpTransfer::Certificate() const {
  const curl_tlssessioninfo* session = nullptr;
  curl_easy_getinfo(curl_.get(), CURLINFO_TLS_SSL_PTR, &session);
  const bool isThere =
      session != nullptr && session->backend == CURLSSLBACKEND_OPENSSL && session->internals != nullptr;
  return isThere ? CertificateOf(*static_cast<const SSL*>(session->internals)) : "";
}

int HttpTransfer::OnProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t) try {
  return static_cast<HttpTransfer*>(self)->Count() ? 0 : 1;  // anything but 0 ends the transfer
} catch (const std::bad_alloc&) {
  return 1;
}

bool HttpTransfer::Count() {
  if (connection_ < 0) return true;
  const std::uint64_t received = std::max(BytesReceived(connection_), counted_);
  const std::uint64_t fresh = received - std::exchange(counted_, received);
  return RequestScope::Current().Spend(fresh, place_.host);
}

std::size_t HttpTransfer::OnHeader(const char* line, std::size_t, std::size_t length, void* self) try {
  return static_cast<HttpTransfer*>(self)->TakeHeader(std::string_view(line, length)) ? length : 0;
} catch (const std::bad_alloc&) {
  return 0;
}

std::size_t HttpTransfer::OnBody(const char* bytes, std::size_t, std::size_t length, void* self) try {
  auto& transfer = *static_cast<HttpTransfer*>(self);
  return transfer.Take(transfer.reader_.Read(std::string_view(bytes, length))) ? length : 0;
} catch (const std::bad_alloc&) {
  return 0;
}

bool HttpTransfer::TakeHeader(std::string_view line) {
  constexpr std::string_view kChallenge = "WWW-Authenticate:";
  constexpr std::string_view kLocation = "Location:";
  constexpr std::string_view kServer = "Server:";
  answer_.headerBytes += line.size();
  if (StartsWithIgnoreCase(line, kChallenge)) answer_.challenges.emplace_back(Trimmed(line.substr(kChallenge.size())));
  if (StartsWithIgnoreCase(line, kLocation)) answer_.location = Trimmed(line.substr(kLocation.size()));
  if (StartsWithIgnoreCase(line, kServer)) answer_.server = Trimmed(line.substr(kServer.size()));
  if (answer_.headerBytes > kLargestHttpHeaders) return false;
  const bool isEnd = line == "\r\n" || line == "\n";
  return !isEnd || EndHead();
}

bool HttpTransfer::EndHead() {
  constexpr long kFirstFinal = 200;
  const bool isOurs = Status() >= kFirstFinal && !std::exchange(answer_.hasHead, true);
  return !isOurs || Take(reader_.Begin(Status()));
}

/// False ends the transfer.
bool HttpTransfer::Take(BodyReader::Step step) {
  answer_.isEnough = step == BodyReader::Step::kEnough;
  return step == BodyReader::Step::kMore;
}

}  // namespace recorder
