#include "recorder/net/http/http_client.h"

#include "recorder/net/http/http_conversation.h"
#include "recorder/net/http/http_place.h"
#include "recorder/net/http/http_status.h"
#include "recorder/net/http/http_transfer.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/limits.h"

namespace recorder {
namespace {

/// Hands on the body of a 200 answer. Any other is read past up to a bound, since libcurl tells of a redirect at its
/// end.
class PageReader : public AnswerReader {
 public:
  explicit PageReader(BodyReader& reader) : reader_(reader) {}

  BodyReader::Step Begin(long status, const std::string& contentType) override {
    isWanted_ = status == kHttpOk;
    unusedBytes_ = 0;
    return isWanted_ ? reader_.Begin(contentType) : BodyReader::Step::kMore;
  }

  BodyReader::Step Read(std::string_view bytes) override {
    if (isWanted_) return reader_.Read(bytes);
    unusedBytes_ += bytes.size();
    return unusedBytes_ > kLargestUnusedBody ? BodyReader::Step::kEnough : BodyReader::Step::kMore;
  }

 private:
  BodyReader& reader_;
  bool isWanted_ = false;
  std::size_t unusedBytes_ = 0;
};

/// Each place is asked anew, without a login at first.
Contact GetAt(const HttpPlace& place, const CameraAddress& camera, BodyReader& reader) {
  PageReader page(reader);
  HttpConversation conversation(place, camera, page, kLargestHttpPicture);
  const OutgoingRequest request{place.path, false, "", ""};
  const Outcome answered = conversation.Send(request);
  if (answered != Outcome::kOk) return {answered, ""};
  const Outcome outcome = OutcomeOfStatus(conversation.Answer().Status());
  RequestScope::Current().Remember(place.host, camera.user, outcome);
  return {outcome, conversation.Answer().Location()};
}

}  // namespace

Outcome HttpGet(const CameraAddress& address, const std::string& path, BodyReader& reader) {
  const auto requestPath = RequestPath(path);
  if (!requestPath) return Outcome::kNoSuchStream;
  return FollowRedirects(PlaceAt(address, *requestPath),
                         [&](const HttpPlace& place) { return GetAt(place, address, reader); });
}

}  // namespace recorder
