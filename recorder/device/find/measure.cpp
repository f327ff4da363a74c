#include "recorder/device/find/measure.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/utility.h"
#include "recorder/device/check/camera_driver.h"
#include "recorder/device/check/wanted_camera.h"
#include "recorder/media/codecs.h"
#include "recorder/media/key_frame_search.h"
#include "recorder/media/rtp_header.h"
#include "recorder/net/rtsp/rtsp_client.h"
#include "recorder/net/source_path.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"
#include "recorder/utility/translate.h"

namespace recorder {
namespace find {
namespace {

/// From here on a user notices how long a picture takes. A little less, since clocks of cameras are.
constexpr double kFarKeyFrames = 3.95;

/// What people call what session descriptions name (RFC 3551, 3640, 3016, 7587).
constexpr std::pair<std::string_view, std::string_view> kAudioNames[] = {
    {"PCMU", "G.711 u-law"}, {"PCMA", "G.711 A-law"}, {"G722", "G.722"},    {"MPEG4-GENERIC", "AAC"},
    {"MP4A-LATM", "AAC"},    {"OPUS", "Opus"},        {"MPA", "MPEG audio"}};

/// What a stranger calls it, for people.
std::string ShownCodec(std::string_view name) {
  const bool isShown = IsUtf8(name) && !HoldsControls(name) && name.size() <= kLongestFoundName;
  return isShown ? std::string(name) : "unknown";
}

std::string VideoName(const std::string& encoding) {
  const Codec* codec = CodecOfEncoding(encoding);
  return codec == nullptr ? ShownCodec(encoding) : std::string(codec->name);
}

std::string AudioName(const std::string& encoding) {
  return ShownCodec(Translate(kAudioNames, encoding, std::string_view(encoding)));
}

/// Measures one stream.
class Measurer {
 public:
  Measurer(const CameraAddress& address, const std::string& path, const OnMeasured& onMeasured)
      : onMeasured_(onMeasured),
        client_(address, path, RequestScope::Current().Deadline()),
        search_([this](std::span<const std::uint8_t> packet) { client_.SendControl(packet); }) {}

  MeasureResult Run() {
    result_.outcome = Open();
    if (result_.outcome == Outcome::kOk) result_.outcome = Watch();
    const bool isTimeOver = result_.outcome == Outcome::kTimedOut && tally_ && !tally_->IsEmpty();
    if (isTimeOver) result_.outcome = Outcome::kOk;
    if (result_.outcome == Outcome::kOk) Warn();
    return std::move(result_);
  }

 private:
  Outcome Open() {
    if (const Outcome outcome = client_.Describe(); outcome != Outcome::kOk) return outcome;
    const SdpVideo& video = client_.Video();
    result_.codec = VideoName(video.codec);
    result_.audio = AudioName(client_.Audio());
    tally_.emplace(video.clockRate);
    if (const Outcome outcome = search_.Open(video.description); outcome != Outcome::kOk) return outcome;
    if (const Outcome outcome = client_.Setup(); outcome != Outcome::kOk) return outcome;
    return client_.Play();
  }

  Outcome Watch() {
    InterleavedPacket packet;
    while (!isEnough_) {
      if (const Outcome outcome = client_.Read(packet); outcome != Outcome::kOk) return outcome;
      if (const Outcome outcome = Take(packet); outcome != Outcome::kOk) return outcome;
    }
    return Outcome::kOk;
  }

  Outcome Take(const InterleavedPacket& packet) {
    const auto header = packet.isControl ? std::nullopt : ParseRtpHeader(packet.bytes);
    if (header) bytes_ += header->payloadSize;
    return search_.Feed(packet.bytes, packet.isControl) ? TakeUnits() : Outcome::kOk;
  }

  /// A packet ends the unit before it and its own, at most.
  Outcome TakeUnits() {
    std::optional<StreamUnit> unit;
    for (int i = 0; i < 2; ++i) {
      if (const Outcome outcome = search_.TakeUnit(unit); outcome != Outcome::kOk) return outcome;
      if (!unit) break;
      Count(*unit);
    }
    return Outcome::kOk;
  }

  void Count(const StreamUnit& unit) {
    tally_->Add(unit.time, unit.isBeginning, bytes_);
    result_.figures = tally_->Figures();
    if (unit.isBeginning && result_.width == 0) TakeSize();
    const bool isSure = unit.isBeginning && tally_->IsSure();
    if (isSure || !Tell()) isEnough_ = true;
  }

  void TakeSize() {
    const PictureSize size = search_.SizeOfUnit().value_or(PictureSize());
    result_.width = size.width;
    result_.height = size.height;
  }

  bool Tell() {
    const int second = static_cast<int>(result_.figures.seconds);
    const bool isNew = second > std::exchange(told_, std::max(told_, second));
    return !isNew || !onMeasured_ || onMeasured_(result_);
  }

  void Warn() {
    const double noKeyFrame = std::max(result_.figures.keyFrameDistance, result_.figures.keyFrameMoreThan);
    if (noKeyFrame >= kFarKeyFrames) result_.warnings.push_back(MeasureWarning::kKeyFramesFar);
    const Codec* codec = CodecOfName(result_.codec);
    const bool isH265 = codec != nullptr && codec->type == VIDEO_TYPE_H265;
    if (isH265) result_.warnings.push_back(MeasureWarning::kH265);
  }

  const OnMeasured& onMeasured_;
  RtspClient client_;
  KeyFrameSearch search_;
  std::optional<StreamTally> tally_;
  std::uint64_t bytes_ = 0;  // of payload
  int told_ = 0;             // seconds
  bool isEnough_ = false;
  MeasureResult result_;
};

/// Where the stream of a stored camera is, as its model tells; `address` holds a lent password.
Outcome PlaceStream(const CameraRecord& camera, CameraAddress& address, std::string& path) {
  NameWantedCamera(camera.vendor, camera.model, address, camera.sourcePath);
  const auto driver = MakeDriver(camera.vendor, camera.model, {address, camera.channel, camera.sourcePath});
  if (!driver) return Outcome::kUnknownModel;
  const bool isKnown = driver->GetStreamPath(path, address.port) == 0;
  return isKnown ? Outcome::kOk : RequestScope::Current().Cause().value_or(Outcome::kNoPath);
}

MeasureResult FailedBy(Outcome outcome) {
  MeasureResult result;
  result.outcome = outcome;
  return result;
}

MeasureResult MeasureAt(CameraAddress address, std::string path, const OnMeasured& onMeasured) {
  const Outcome outcome = TakeApart(path, address);
  return outcome == Outcome::kOk ? Measurer(address, path, onMeasured).Run() : FailedBy(outcome);
}

}  // namespace
}  // namespace find

MeasureResult Measure(CameraAddress address, std::string path, std::chrono::seconds longest,
                      const OnMeasured& onMeasured) {
  const RequestScope scope(std::min(longest, kLongestMeasure), kMeasuredBytes);
  return find::MeasureAt(std::move(address), std::move(path), onMeasured);
}

MeasureResult MeasureStored(const CameraRecord& camera, std::chrono::seconds longest) {
  const RequestScope scope(std::min(longest, kLongestMeasure), kMeasuredBytes);
  CameraAddress address{camera.host, camera.port, camera.user,
                        GetCamRealPass(camera.id, camera.vendor, camera.model, camera.channel)};
  std::string path;
  const Outcome outcome = find::PlaceStream(camera, address, path);
  MeasureResult result = outcome == Outcome::kOk ? find::MeasureAt(address, path, {}) : find::FailedBy(outcome);
  result.outcome = scope.Told(result.outcome);
  result.hasSentLogin = scope.HasSentLogin();
  return result;
}

}  // namespace recorder
