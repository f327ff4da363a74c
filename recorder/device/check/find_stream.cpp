#include "recorder/device/check/find_stream.h"

#include <optional>
#include <utility>

#include "recorder/device/check/http_probe.h"
#include "recorder/device/check/rtsp_probe.h"
#include "recorder/media/codecs.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/log.h"

namespace recorder {
namespace {

/// What came of asking for a picture over HTTP.
struct PictureAnswer {
  Outcome outcome;
  bool hasBegun = false;  ///< a picture, though perhaps no whole one
  std::string jpeg;
};

PictureAnswer AskHttp(const CameraAddress& address, const std::string& path, bool mustHurry) {
  std::optional<HalfTime> share;
  if (mustHurry) share.emplace();
  PictureAnswer answer;
  answer.outcome = FetchPicture(address, path, answer.jpeg, answer.hasBegun);
  return answer;
}

FoundStream OverRtsp(const RtspAnswer& answer) { return {answer.outcome, false, ""}; }
FoundStream OverHttp(PictureAnswer answer) { return {answer.outcome, true, std::move(answer.jpeg)}; }

/// True where the protocol was not spoken, or has nothing at this path.
bool IsElsewhere(Outcome outcome) {
  return outcome == Outcome::kNotThisProtocol || outcome == Outcome::kNoSuchStream || outcome == Outcome::kNoVideo;
}

/// Of a codec that does not come over HTTP, only that there is a web server is worth knowing.
bool MayBeOverHttp(const RtspAnswer& rtsp, int videoType) {
  if (!CanBeOverHttp(videoType)) return rtsp.outcome == Outcome::kNotThisProtocol;
  const bool isUnanswered = rtsp.outcome == Outcome::kTimedOut || rtsp.outcome == Outcome::kNotUnderstood;
  return IsElsewhere(rtsp.outcome) || (isUnanswered && !rtsp.isSpoken);
}

/// RTSP servers have many words for what they do not know, such as 400, 405, 501 and 503.
bool MayBeOverRtsp(const PictureAnswer& http) {
  const bool isForeign = http.outcome == Outcome::kNotUnderstood || http.outcome == Outcome::kBusy;
  return !http.hasBegun && (isForeign || http.outcome == Outcome::kTimedOut || IsElsewhere(http.outcome));
}

/// The cause where RTSP was expected and is not spoken, and HTTP has nothing either.
Outcome CauseWithoutRtsp(Outcome rtsp, Outcome http) {
  if (rtsp == Outcome::kTimedOut) return http == Outcome::kNotThisProtocol ? rtsp : http;
  return IsElsewhere(http) ? rtsp : http;
}

/// The cause where HTTP was expected and has nothing, and RTSP is not spoken.
Outcome CauseWithoutHttp(Outcome http, Outcome rtsp) {
  const bool isRecognised = http != Outcome::kNotThisProtocol && http != Outcome::kTimedOut;
  return isRecognised || rtsp == Outcome::kNotThisProtocol ? http : rtsp;
}

}  // namespace

bool CanBeOverHttp(int videoType) {
  const Codec* codec = CodecOfType(videoType);
  return videoType == VIDEO_TYPE_ANY || (codec != nullptr && codec->isOverHttp);
}

FoundStream FindByRtspFirst(const CameraAddress& address, const std::string& path, int videoType) {
  const bool canBeOverHttp = CanBeOverHttp(videoType);
  const Clock::time_point answerBy = canBeOverHttp ? HalfTime::End() : RequestScope::Current().Deadline();
  const RtspAnswer rtsp = AskRtsp(address, path, videoType, answerBy);
  if (!MayBeOverHttp(rtsp, videoType)) return OverRtsp(rtsp);
  PictureAnswer http = AskHttp(address, path, rtsp.isSpoken || !canBeOverHttp);
  const bool isThere = http.outcome == Outcome::kOk || http.hasBegun;
  if (isThere && canBeOverHttp) return OverHttp(std::move(http));
  if (http.outcome == Outcome::kOk) return {Outcome::kNoVideo, false, ""};
  if (rtsp.isSpoken || !canBeOverHttp) return OverRtsp(rtsp);
  return {CauseWithoutRtsp(rtsp.outcome, http.outcome), false, ""};
}

FoundStream FindByHttpFirst(const CameraAddress& address, const std::string& path, int videoType) {
  PictureAnswer http = AskHttp(address, path, true);
  if (!MayBeOverRtsp(http)) return OverHttp(std::move(http));
  const RtspAnswer rtsp = AskRtsp(address, path, videoType, HalfTime::End());
  if (rtsp.isSpoken) return OverRtsp(rtsp);
  return {CauseWithoutHttp(http.outcome, rtsp.outcome), false, ""};
}

void LogUnusable(const CameraAddress& address, Outcome outcome) {
  LogFailure("The stream of " + PlaceOf(address) + " cannot be used: " + std::string(Describe(outcome)) + ".");
}

}  // namespace recorder
