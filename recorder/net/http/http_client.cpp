#include "recorder/net/http/http_client.h"

#include "recorder/net/http/http_conversation.h"
#include "recorder/net/http/http_place.h"
#include "recorder/net/http/http_status.h"
#include "recorder/net/http/http_transfer.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/cause_table.h"
#include "recorder/utility/limits.h"

namespace recorder {
namespace {

/// Hands on the body of a 200 answer. Of any other the head is enough: some servers neither tell how long the body is
/// nor close the connection behind it, so that its end would be waited for until the deadline.
class PageReader : public AnswerReader {
 public:
  explicit PageReader(BodyReader& reader) : reader_(reader) {}

  BodyReader::Step Begin(long status) override {
    return status == kHttpOk ? BodyReader::Step::kMore : BodyReader::Step::kEnough;
  }

  BodyReader::Step Read(std::string_view bytes) override { return reader_.Read(bytes); }

 private:
  BodyReader& reader_;
};

/// Each place is asked anew, without a login at first.
Contact GetAt(const HttpPlace& place, const CameraAddress& camera, BodyReader& reader) {
  PageReader page(reader);
  HttpConversation conversation(place, camera, page, kLargestHttpPicture);
  const OutgoingRequest request{place.path, false, "", ""};
  const Outcome answered = conversation.Send(request);
  if (answered != Outcome::kOk) return {answered, ""};
  const Outcome outcome = OutcomeOfHttp(conversation.Answer().Status());
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
