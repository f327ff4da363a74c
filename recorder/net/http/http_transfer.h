#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "recorder/net/curl_handles.h"
#include "recorder/net/http/http_client.h"
#include "recorder/net/http/http_place.h"
#include "recorder/net/login/login.h"
#include "recorder/net/server_name.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/outcome.h"

namespace recorder {

struct OutgoingRequest {
  std::string path;  ///< as RequestPath gives it
  bool isPost = false;
  std::string contentType;  ///< of the body
  std::string body;         ///< of a POST
  bool hasLogin = false;    ///< in its body: the camera's challenge is not answered with another
};

/// Receives the bodies of all answers, whatever their status.
class AnswerReader {
 public:
  virtual ~AnswerReader() = default;
  /// Called at the end of an answer's head. kEnough: no body is wanted, and so none is waited for.
  virtual BodyReader::Step Begin(long status) = 0;
  virtual BodyReader::Step Read(std::string_view bytes) = 0;
};

/// Says whether a certificate may be talked to: the SHA-256 of its DER in hexadecimal. Any other outcome than kOk is
/// that of the request.
using CertificateCheck = std::function<Outcome(const std::string& certificate)>;

/// libcurl's part, but for connecting, which is ConnectTo's: one request after the other to one host and port, over at
/// most one connection at a time. Knows nothing of logins but that their header must not be repeated by accident.
class HttpTransfer {
 public:
  enum class Connection {
    kKeep,   ///< may be one that was used before, and may be used again
    kFresh,  ///< is a new one, and may be used again
    kClose,  ///< is a new one, and ends with the answer
  };

  /// `place` and `reader` must outlive the transfer. An answer that announces more than `maxBody` bytes is refused.
  /// `check` is asked before a request is sent over TLS.
  HttpTransfer(const HttpPlace& place, AnswerReader& reader, std::size_t maxBody, CertificateCheck check);
  HttpTransfer(const HttpTransfer&) = delete;  // libcurl holds its address
  HttpTransfer& operator=(const HttpTransfer&) = delete;

  /// Sends the request, with an Authorization header unless `authorization` is "". kOk: an answer came as far as the
  /// reader wanted it, whatever its status. Ends at `deadline` at the latest. All that comes over the connection counts
  /// for the RequestScope, chunk marks and TLS included: kNotUnderstood when that has enough. On a connection that was
  /// used before, libcurl by itself sends a request again that the camera answered by closing.
  Outcome Perform(const OutgoingRequest& request, const std::string& authorization, Connection connection,
                  Clock::time_point deadline);

  // Of the last answer:

  long Status() const;
  std::string ContentType() const;
  /// The camera took the request and closed, without a byte of an answer.
  bool IsUnanswered() const { return answer_.isUnanswered; }
  /// What it wants as a login.
  std::vector<LoginChallenge> Challenges() const;
  /// What it says of the software there.
  ServerName Server() const;
  /// Where it redirects to, as an absolute address, or "".
  std::string Location() const;

 private:
  struct Answer {
    std::size_t headerBytes = 0;
    std::vector<std::string> challenges;
    std::string location;
    std::string server;
    bool hasHead = false;   // whole, and not of an answer before the one to the request (RFC 9110 section 15.2)
    bool isEnough = false;  ///< we ended the transfer, content with what has come
    bool isWhole = false;   ///< came as far as we wanted it
    bool isUnanswered = false;
  };

  template <class Value>
  void Set(CURLoption option, Value value) {
    curl_easy_setopt(curl_.get(), option, value);
  }

  void SetProtocol();
  void SetLimits(std::size_t maxBody);
  void SetConnecting();
  void SetCallbacks();
  void SetTarget(const std::string& path);
  void SetBody(const OutgoingRequest& request);
  Outcome OutcomeOf(CURLcode code);

  // Called by libcurl, which neither looks names up nor connects.
  static curl_socket_t OnOpenSocket(void* self, curlsocktype, curl_sockaddr*);
  static int OnSocketOpened(void*, curl_socket_t, curlsocktype) { return CURL_SOCKOPT_ALREADY_CONNECTED; }
  static int OnCloseSocket(void* self, curl_socket_t connection);

  // Called by libcurl between connecting and each request.
  static int OnConnected(void* self, char*, char*, int, int);
  std::string Certificate() const;  // the camera's

  // Called by libcurl whenever it has read, and now and then.
  static int OnProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t);
  bool Count();  // what came since the last time; false when the RequestScope has enough

  // Called by libcurl. They return the number of bytes taken; any other number ends the transfer.
  static std::size_t OnHeader(const char* line, std::size_t, std::size_t length, void* self);
  static std::size_t OnBody(const char* bytes, std::size_t, std::size_t length, void* self);
  bool TakeHeader(std::string_view line);
  bool EndHead();
  bool Take(BodyReader::Step step);

  const HttpPlace& place_;
  AnswerReader& reader_;
  const CertificateCheck check_;
  int connection_ = -1;        // libcurl's, as long as it is open
  std::uint64_t counted_ = 0;  // bytes that came over it and are counted
  UrlHandle url_;              // libcurl reads it during a request
  CurlList connectTo_;
  CurlList statusLines_;  // that count as HTTP/1.0 200
  CurlHandle curl_;
  Clock::time_point deadline_;
  Outcome connected_ = Outcome::kOk;  // of the last attempt, if there was one, the certificate included
  Answer answer_;
};

}  // namespace recorder
