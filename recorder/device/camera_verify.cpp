#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include "platform/device.h"
#include "platform/utility.h"
#include "recorder/device/http_probe.h"
#include "recorder/device/verify_result.h"
#include "recorder/net/camera_address.h"
#include "recorder/net/rtsp_client.h"
#include "recorder/utility/outcome.h"
#include "recorder/utility/request_scope.h"

namespace recorder {
namespace {

// Encoding names of session descriptions (RFC 6184, 7798, 3016, 2435).
constexpr std::pair<int, std::string_view> kEncodings[] = {
    {VIDEO_TYPE_H264, "H264"},
    {VIDEO_TYPE_H265, "H265"},
    {VIDEO_TYPE_MPEG4, "MP4V-ES"},
    {VIDEO_TYPE_MJPEG, "JPEG"},
};

bool IsWanted(int videoType, std::string_view encoding) {
  if (videoType == VIDEO_TYPE_ANY) return true;
  return std::find(std::begin(kEncodings), std::end(kEncodings), std::pair(videoType, encoding)) !=
         std::end(kEncodings);
}

Outcome ProbeRtspStream(const CameraAddress& address, const std::string& path, int videoType) {
  RtspClient client(address, path, RequestScope::Current().Deadline());
  if (const Outcome outcome = client.Describe(); outcome != Outcome::kOk) return outcome;
  if (!IsWanted(videoType, client.Video().codec)) return Outcome::kNoVideo;
  return client.Setup();
}

}  // namespace
}  // namespace recorder

struct CameraVerify::Impl {
  recorder::CameraAddress address;
  std::string path;
  int videoType;
  int streamingType;

  recorder::Outcome Probe() const;
  recorder::Outcome ProbeRtsp() const { return recorder::ProbeRtspStream(address, path, videoType); }
  recorder::Outcome ProbeHttp() const;
  recorder::Outcome ProbeEither(recorder::Outcome (Impl::*first)() const,
                                recorder::Outcome (Impl::*second)() const) const;
};

recorder::Outcome CameraVerify::Impl::ProbeHttp() const {
  const bool isJpeg = videoType == VIDEO_TYPE_ANY || videoType == VIDEO_TYPE_MJPEG;
  return isJpeg ? recorder::ProbeHttpStream(address, path) : recorder::Outcome::kNoVideo;
}

/// Without a named way to travel both are tried, but the second only where the first found nothing of its kind.
recorder::Outcome CameraVerify::Impl::ProbeEither(recorder::Outcome (Impl::*first)() const,
                                                  recorder::Outcome (Impl::*second)() const) const {
  using recorder::Outcome;
  const auto isElsewhere = [](Outcome outcome) {
    return outcome == Outcome::kNotThisProtocol || outcome == Outcome::kNoSuchStream || outcome == Outcome::kNoVideo;
  };
  const Outcome outcome = (this->*first)();
  if (!isElsewhere(outcome)) return outcome;
  const Outcome other = (this->*second)();
  return isElsewhere(other) ? outcome : other;
}

recorder::Outcome CameraVerify::Impl::Probe() const {
  const bool isUnknown = videoType == VIDEO_TYPE_UNKNOWN || streamingType == STREAMING_TYPE_UNKNOWN;
  if (isUnknown) return recorder::Outcome::kNoVideo;  // no camera sends it
  switch (streamingType) {
    case STREAMING_TYPE_RTSP:
      return ProbeRtsp();
    case STREAMING_TYPE_HTTP:
      return ProbeHttp();
    default:
      return videoType == VIDEO_TYPE_MJPEG ? ProbeEither(&Impl::ProbeHttp, &Impl::ProbeRtsp)
                                           : ProbeEither(&Impl::ProbeRtsp, &Impl::ProbeHttp);
  }
}

CameraVerify::CameraVerify(const std::string& address, int port, const std::string& user, const std::string& password,
                           const std::string& sourcePath, int videoType, int streamingType,
                           RTSP_PROTOCOL /*rtspProtocol*/)  // the check itself needs the video granted, not sent
    : impl(std::make_unique<Impl>(Impl{{address, port, user, password}, sourcePath, videoType, streamingType})) {}

CameraVerify::~CameraVerify() = default;

int CameraVerify::Verify() {
  const recorder::Outcome outcome = impl->Probe();
  if (outcome != recorder::Outcome::kOk) {
    VTPrintf(LOG_TYPE_FAILURE, "verify", nullptr, "recorder/device/camera_verify", __LINE__, __func__,
             "The stream of %s cannot be used: %s.\n", recorder::PlaceOf(impl->address).c_str(),
             std::string(recorder::Describe(outcome)).c_str());
  }
  return recorder::ToVerifyResult(outcome);
}
