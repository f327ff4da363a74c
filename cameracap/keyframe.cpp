#include "cameracap/keyframe.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

#include "cameracap/parameters.h"
#include "platform/utility.h"

namespace {

constexpr int kMaxLostAttempts = 120;
constexpr unsigned char kStartCode[] = {0, 0, 0, 1};  // ITU-T H.264 annex B

/// The picture slots of one grab, and what the decoder is told.
struct JpegTarget {
  unsigned char** jpeg;
  int* jpegSize;
  int videoType;
};

/// Reads the format, once a grab, and creates the packetizer for it; false when there is none for that format.
bool PrepareStream(RtpFetch& fetcher, MP4Stream& stream, ESFormat& format) {
  fetcher.GetVideoFormat(format, ES_FORMAT_WITH_CONFIGURATION);
  stream.format = format;
  stream.Init();
  if (stream.packetizer != nullptr) return true;
  VTPrintf(LOG_TYPE_FAILURE, nullptr, nullptr, kLogSource, 230, "GetImgByRTP",
           "Failed to create vdo stream Packetizer.\n");
  return false;
}

/// Fetches the current part as a stamped unit; null when it is empty, too large for a unit, or cannot be fetched.
std::unique_ptr<MediaUnit> FetchUnit(RtpFetch& fetcher, const ESFormat& format, PtsSmoother& smoother) {
  int size = 0;
  timeval captureTime = {};
  fetcher.GetImgContentInfo(size, captureTime);
  if (size <= 0) return nullptr;

  const std::int64_t now = GetCurTimestamp();
  const int startCodeSize = format.codec == kCodecH264 ? static_cast<int>(std::size(kStartCode)) : 0;
  if (size > std::numeric_limits<int>::max() - startCodeSize) return nullptr;
  auto unit = std::make_unique<MediaUnit>(size + startCodeSize);
  std::copy_n(kStartCode, startCodeSize, unit->GetBuffer());

  const std::int64_t pts = smoother.Step(format.type, captureTime, now);
  unit->SetPTS(pts);
  unit->SetDTS(pts);
  unit->SetTimestamp(now);
  if (fetcher.FetchContent(unit->GetBuffer() + startCodeSize, static_cast<unsigned int>(size)) != 0) return nullptr;
  return unit;
}

/// Feeds one unit and decodes the key frame that comes out. The grab ends with the result, or goes on without one.
std::optional<int> DecodeGetJpeg(std::unique_ptr<MediaUnit> unit, MP4Stream& stream, const JpegTarget& target) {
  const std::unique_ptr<MediaUnit> key{DoPacketizeGetIframe(unit.release(), *stream.packetizer, &stream)};
  if (key == nullptr) return std::nullopt;

  const unsigned char* frame = key->GetFrame();
  const int frameSize = key->GetFrameSize();
  if (frame == nullptr || frameSize == 0) {
    VTPrintf(LOG_TYPE_FAILURE, nullptr, nullptr, kLogSource, 181, "DecodeGetJpeg", "Failed to get i frame image.\n");
    return -1;
  }
  return DoFFMpegGetJpeg(target.videoType, stream.format.extradata, stream.format.extradataSize, frame, frameSize,
                         target.jpeg, target.jpegSize);
}

}  // namespace

std::int64_t PtsSmoother::Step(int formatType, const timeval& captureTime, std::int64_t now) {
  constexpr std::uint64_t kRawMask = (std::uint64_t{1} << 56) - 1;
  const std::int64_t tolerance = formatType == ES_CLOCK_LOCAL ? 50'000 : 200'000;
  const auto raw = static_cast<std::int64_t>(
      (static_cast<std::uint64_t>(captureTime.tv_sec) * 1'000'000 + static_cast<std::uint64_t>(captureTime.tv_usec)) &
      kRawMask);
  pts += Increment(raw - lastRawUs, tolerance);
  lastRawUs = raw;
  if (std::abs(now - pts) > tolerance) pts = now;
  return pts;
}

std::int64_t PtsSmoother::Increment(std::int64_t step, std::int64_t tolerance) {
  if (std::abs(step) > tolerance) return step > 0 ? std::int64_t{meanForwardStep} : std::int64_t{meanBackwardStep};
  // A mean is an arithmetic shift, not a division: that of negative steps rounds away from zero.
  if (step >= 0) {
    meanForwardStep = static_cast<std::uint32_t>(meanForwardStep == 0 ? step : (step + meanForwardStep) >> 1);
  } else {
    meanBackwardStep = static_cast<std::int32_t>(meanBackwardStep == 0 ? step : (step + meanBackwardStep) >> 1);
  }
  return step;
}

int GetImgByRTP(const std::string& host, int port, const std::string& user, const std::string& password,
                const std::string& path, unsigned char** jpeg, int* jpegSize, int videoType, int camId) {
  if (jpeg == nullptr || jpegSize == nullptr) {
    VTPrintf(LOG_TYPE_FAILURE, nullptr, nullptr, kLogSource, 197, "GetImgByRTP", "Invalid function parameters\n");
    return -1;
  }

  ESFormat format;
  RtpFetch fetcher(host, port, path, user, password, false, "", STREAMING_TYPE_RTSP, RTSP_PROTOCOL_AUTO, 0, "", "");
  const auto stream = std::make_unique<MP4Stream>(MP4_STREAM_VIDEO, camId);
  const JpegTarget target{jpeg, jpegSize, videoType};
  *jpeg = nullptr;
  *jpegSize = 0;
  PtsSmoother smoother;
  bool streamReady = false;

  for (int attemptsLeft = kMaxLostAttempts; attemptsLeft > 0; --attemptsLeft) {
    unsigned int partNumber = 0;
    int headerLength = 0;
    if (fetcher.NextPartInfo(partNumber, nullptr, 0, headerLength) != 0) {
      VTPrintf(LOG_TYPE_FAILURE, nullptr, nullptr, kLogSource, 221, "GetImgByRTP", "Get rtp header failed.\n");
      return -1;
    }
    streamReady = streamReady || PrepareStream(fetcher, *stream, format);
    if (!streamReady) return -1;

    std::unique_ptr<MediaUnit> unit = FetchUnit(fetcher, format, smoother);
    if (unit == nullptr) continue;
    if (const std::optional<int> result = DecodeGetJpeg(std::move(unit), *stream, target)) return *result;
  }
  return -1;
}

MediaUnit* DoPacketizeGetIframe(MediaUnit* unit, Packetizer& packetizer, MP4Stream* stream) {
  MediaUnit** slot = unit != nullptr ? &unit : nullptr;
  std::unique_ptr<MediaUnit> held;
  while (std::unique_ptr<MediaUnit> out{packetizer.Packetize(stream, slot)}) {
    const bool isKeyFrame = (out->GetFrameType() & FRAME_FLAG_KEY) != 0;
    if (isKeyFrame && held == nullptr) held = std::move(out);
  }
  return held.release();
}
