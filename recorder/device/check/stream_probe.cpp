#include "recorder/device/check/stream_probe.h"

#include "platform/device.h"
#include "recorder/device/check/find_stream.h"
#include "recorder/device/check/http_probe.h"
#include "recorder/device/check/rtsp_probe.h"
#include "recorder/net/source_path.h"
#include "recorder/request/request_scope.h"

namespace recorder {
namespace {

Outcome ProbeHttp(const CameraAddress& address, const std::string& path, int videoType) {
  return CanBeOverHttp(videoType) ? ProbeHttpStream(address, path) : Outcome::kNoVideo;
}

/// Without a named way to travel both are tried.
Outcome ProbeEither(const CameraAddress& address, const std::string& path, int videoType) {
  const bool isHttpExpected = videoType != VIDEO_TYPE_ANY && CanBeOverHttp(videoType);
  const auto find = isHttpExpected ? FindByHttpFirst : FindByRtspFirst;
  return find(address, path, videoType).outcome;
}

Outcome ProbeAs(CameraAddress address, std::string path, int videoType, int streamingType) {
  const bool isUnknown = videoType == VIDEO_TYPE_UNKNOWN || streamingType == STREAMING_TYPE_UNKNOWN;
  if (isUnknown) return Outcome::kNoVideo;  // no camera sends it
  if (const Outcome outcome = TakeApart(path, address); outcome != Outcome::kOk) return outcome;
  switch (streamingType) {
    case STREAMING_TYPE_RTSP:
      return AskRtsp(address, path, videoType, RequestScope::Current().Deadline()).outcome;
    case STREAMING_TYPE_HTTP:
      return ProbeHttp(address, path, videoType);
    default:
      return ProbeEither(address, path, videoType);
  }
}

}  // namespace

Outcome ProbeStream(const CameraAddress& address, const std::string& path, int videoType, int streamingType) {
  const Outcome outcome = ProbeAs(address, path, videoType, streamingType);
  RequestScope::Current().SetCause(outcome);
  if (outcome != Outcome::kOk) LogUnusable(address, outcome);
  return outcome;
}

}  // namespace recorder
