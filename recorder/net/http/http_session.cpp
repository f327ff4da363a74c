#include "recorder/net/http/http_session.h"

#include <optional>
#include <string_view>
#include <utility>

#include "recorder/net/http/http_conversation.h"
#include "recorder/net/http/http_place.h"
#include "recorder/net/http/http_transfer.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/cause_table.h"
#include "recorder/utility/limits.h"

namespace recorder {

bool EndsConversation(Outcome outcome) { return RowOf(outcome).reach != Reach::kContact; }

struct HttpSession::Impl : AnswerReader {
  explicit Impl(const CameraAddress& address) : camera(address) { MoveTo(PlaceAt(camera, "/")); }

  HttpAnswer Send(OutgoingRequest request) {
    const auto path = RequestPath(request.path);
    if (!path) return {Outcome::kNoSuchStream, 0, "", ""};
    HttpPlace first = conversation->Place();
    first.path = *path;
    const Outcome outcome = FollowRedirects(std::move(first), [&](const HttpPlace& place) -> Contact {
      MoveTo(place);
      request.path = place.path;
      const Outcome answered = conversation->Send(request, end);
      return {answered, answered == Outcome::kOk ? conversation->Answer().Location() : ""};
    });
    return outcome == Outcome::kOk ? TakeAnswer() : HttpAnswer{outcome, 0, "", ""};
  }

  /// Another port or protocol is another conversation, with a connection and a login of its own.
  void MoveTo(const HttpPlace& place) {
    const bool isThere =
        conversation && conversation->Place().isTls == place.isTls && conversation->Place().port == place.port;
    if (!isThere) conversation.emplace(place, camera, *this, kLargestXml);  // first closes the connection before
  }

  HttpAnswer TakeAnswer() {
    const HttpTransfer& answer = conversation->Answer();
    return {Outcome::kOk, answer.Status(), answer.ContentType(), std::move(body)};
  }

  BodyReader::Step Begin(long) override {
    body.clear();
    return BodyReader::Step::kMore;
  }

  BodyReader::Step Read(std::string_view bytes) override {
    if (bytes.size() > kLargestXml - body.size()) return BodyReader::Step::kMalformed;
    body += bytes;
    return BodyReader::Step::kMore;
  }

  const CameraAddress camera;
  std::string body;
  std::optional<HttpConversation> conversation;
  Clock::time_point end = Clock::time_point::max();
};

HttpSession::HttpSession(const CameraAddress& camera) : impl_(std::make_unique<Impl>(camera)) {}

HttpSession::~HttpSession() = default;

HttpAnswer HttpSession::Get(const std::string& path) { return impl_->Send({path, false, "", ""}); }

HttpAnswer HttpSession::Post(const std::string& path, const std::string& contentType, const std::string& body,
                             Login login) {
  return impl_->Send({path, true, contentType, body, login == Login::kInBody});
}

void HttpSession::EndBy(Clock::time_point end) { impl_->end = end; }

ServerName HttpSession::Server() const { return impl_->conversation->Answer().Server(); }

void HttpSession::LoginAccepted() { impl_->conversation->LoginAccepted(); }

bool HttpSession::IsLoggedIn() const { return impl_->conversation->IsLoggedIn(); }

}  // namespace recorder
