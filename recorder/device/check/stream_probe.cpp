#include "recorder/device/check/stream_probe.h"

#include <string_view>

#include "platform/device.h"
#include "recorder/device/check/http_probe.h"
#include "recorder/media/codecs.h"
#include "recorder/net/rtsp/rtsp_client.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/log.h"

namespace recorder {
namespace {

using Probe = Outcome(const CameraAddress& address, const std::string& path, int videoType);

/// True for a codec whose name in session descriptions is `encoding`.
bool IsWanted(int videoType, std::string_view encoding) {
  if (videoType == VIDEO_TYPE_ANY) return true;
  const Codec* codec = CodecOfType(videoType);
  return codec != nullptr && codec->rtp && codec->rtp->encoding == encoding;
}

bool IsOverHttp(int videoType) {
  const Codec* codec = CodecOfType(videoType);
  return codec != nullptr && codec->isOverHttp;
}

Outcome ProbeRtsp(const CameraAddress& address, const std::string& path, int videoType) {
  RtspClient client(address, path, RequestScope::Current().Deadline());
  if (const Outcome outcome = client.Describe(); outcome != Outcome::kOk) return outcome;
  if (!IsWanted(videoType, client.Video().codec)) return Outcome::kNoVideo;
  return client.Setup();
}

Outcome ProbeHttp(const CameraAddress& address, const std::string& path, int videoType) {
  const bool canBe = videoType == VIDEO_TYPE_ANY || IsOverHttp(videoType);
  return canBe ? ProbeHttpStream(address, path) : Outcome::kNoVideo;
}

/// Without a named way to travel both are tried, but the second only where the first found nothing of its kind.
Outcome ProbeEither(Probe* first, Probe* second, const CameraAddress& address, const std::string& path, int videoType) {
  const auto isElsewhere = [](Outcome outcome) {
    return outcome == Outcome::kNotThisProtocol || outcome == Outcome::kNoSuchStream || outcome == Outcome::kNoVideo;
  };
  const Outcome outcome = first(address, path, videoType);
  if (!isElsewhere(outcome)) return outcome;
  const Outcome other = second(address, path, videoType);
  return isElsewhere(other) ? outcome : other;
}

Outcome ProbeAs(const CameraAddress& address, const std::string& path, int videoType, int streamingType) {
  const bool isUnknown = videoType == VIDEO_TYPE_UNKNOWN || streamingType == STREAMING_TYPE_UNKNOWN;
  if (isUnknown) return Outcome::kNoVideo;  // no camera sends it
  switch (streamingType) {
    case STREAMING_TYPE_RTSP:
      return ProbeRtsp(address, path, videoType);
    case STREAMING_TYPE_HTTP:
      return ProbeHttp(address, path, videoType);
    default:
      return IsOverHttp(videoType) ? ProbeEither(ProbeHttp, ProbeRtsp, address, path, videoType)
                                   : ProbeEither(ProbeRtsp, ProbeHttp, address, path, videoType);
  }
}

}  // namespace

Outcome ProbeStream(const CameraAddress& address, const std::string& path, int videoType, int streamingType) {
  const Outcome outcome = ProbeAs(address, path, videoType, streamingType);
  RequestScope::Current().SetCause(outcome);
  if (outcome != Outcome::kOk) {
    LogFailure("The stream of " + PlaceOf(address) + " cannot be used: " + std::string(Describe(outcome)) + ".");
  }
  return outcome;
}

}  // namespace recorder
