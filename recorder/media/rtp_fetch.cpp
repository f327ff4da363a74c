#include <sys/time.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "platform/media.h"
#include "platform/utility.h"
#include "recorder/media/access_unit.h"
#include "recorder/media/codecs.h"
#include "recorder/media/depacketizer.h"
#include "recorder/media/picture_decoder.h"
#include "recorder/net/rtsp/rtsp_client.h"

namespace recorder {
namespace {

using Bytes = std::span<const std::uint8_t>;

/// After this long without a key frame a point of recovery will do: some encoders never send an IDR again.
constexpr std::chrono::seconds kKeyFramePatience{2};

/// Four-character code of the codec that the depacketizer has; 0 where there is none, or one unknown to us.
std::uint32_t CodeOf(const Depacketizer* depacketizer) {
  const Codec* codec = depacketizer == nullptr ? nullptr : CodecOfLibav(avcodec_get_name(depacketizer->Codec()));
  return codec == nullptr ? 0 : codec->rtp->code;
}

Bytes WithoutStartCode(Bytes unit) {
  const auto firstSet = std::find_if(unit.begin(), unit.end(), [](std::uint8_t byte) { return byte != 0; });
  const bool hasStartCode = firstSet - unit.begin() >= 2 && firstSet != unit.end() && *firstSet == 1;
  return hasStartCode ? unit.subspan(static_cast<std::size_t>(firstSet - unit.begin()) + 1) : unit;
}

/// A receiver report without a block and a picture loss indication (RFC 3550 section 6.4.2, RFC 4585 section 6.3.1): it
/// asks the camera of stream `source` for a key frame now.
std::array<std::uint8_t, 20> KeyFrameRequest(std::uint32_t source) {
  constexpr std::uint8_t kSelf = 1;
  const auto byteOf = [source](int shift) { return static_cast<std::uint8_t>(source >> shift & 0xff); };
  return {0x80, 201, 0, 1, 0, 0, 0, kSelf,  //
          0x81, 206, 0, 2, 0, 0, 0, kSelf, byteOf(24), byteOf(16), byteOf(8), byteOf(0)};
}

timeval Now() {
  timeval now{};
  gettimeofday(&now, nullptr);
  return now;
}

Clock::time_point DeadlineOf(int timeoutSeconds) {
  const Clock::time_point deadline = RequestScope::Current().Deadline();
  if (timeoutSeconds <= 0) return deadline;
  return std::min(deadline, Clock::now() + std::chrono::seconds(timeoutSeconds));
}

}  // namespace
}  // namespace recorder

struct RtpFetch::Impl {
  recorder::CameraAddress address;
  std::string path;
  std::string userAgent;
  int timeoutSeconds = 0;
  bool isSupported = false;

  std::optional<recorder::RtspClient> client;
  std::unique_ptr<recorder::Depacketizer> depacketizer;
  std::optional<recorder::AccessUnitAssembler> assembler;
  std::uint32_t codec = 0;
  bool hasKeyFrame = false;
  bool hasAskedForKeyFrame = false;
  recorder::Clock::time_point started;
  std::uint32_t source = 0;  // SSRC of the video
  std::vector<std::uint8_t> pieces;

  recorder::AccessUnit unit;
  std::span<const std::uint8_t> part;  // of `unit`
  timeval captureTime{};
  unsigned int nextPart = 0;

  ~Impl() { recorder::ForgetKeyFrame(); }
  recorder::Outcome Open();
  recorder::Outcome NextPart();
  recorder::Outcome ReadUnit();
  bool IsWanted();
  void AskForKeyFrame();
};

/// Everything up to the running stream.
recorder::Outcome RtpFetch::Impl::Open() {
  using recorder::Outcome;
  if (!isSupported) return Outcome::kNotUnderstood;
  client.emplace(address, path, recorder::DeadlineOf(timeoutSeconds), userAgent.empty() ? "recorder" : userAgent);
  if (const Outcome outcome = client->Describe(); outcome != Outcome::kOk) return outcome;
  depacketizer = recorder::Depacketizer::Open(
      client->Video().description, [this](std::span<const std::uint8_t> packet) { client->SendControl(packet); });
  codec = recorder::CodeOf(depacketizer.get());
  if (codec == 0) return Outcome::kNoVideo;
  assembler.emplace(codec);
  if (const Outcome outcome = client->Setup(); outcome != Outcome::kOk) return outcome;
  if (const Outcome outcome = client->Play(); outcome != Outcome::kOk) return outcome;
  started = recorder::Clock::now();
  return Outcome::kOk;
}

recorder::Outcome RtpFetch::Impl::NextPart() {
  using recorder::Outcome;
  part = {};
  if (!client) {
    if (const Outcome outcome = Open(); outcome != Outcome::kOk) return outcome;
  }
  do {
    if (const Outcome outcome = ReadUnit(); outcome != Outcome::kOk) return outcome;
  } while (!IsWanted());
  captureTime = recorder::Now();
  part = codec == kCodecH264 ? recorder::WithoutStartCode(unit.bytes) : std::span<const std::uint8_t>(unit.bytes);
  return Outcome::kOk;
}

recorder::Outcome RtpFetch::Impl::ReadUnit() {
  using recorder::Outcome;
  for (;;) {
    if (auto finished = assembler->Take()) {
      unit = std::move(*finished);
      return Outcome::kOk;
    }
    recorder::InterleavedPacket packet;
    if (const Outcome outcome = client->Read(packet); outcome != Outcome::kOk) return outcome;
    pieces.clear();
    depacketizer->Feed(packet.bytes, pieces);
    const auto header = recorder::ParseRtpHeader(packet.bytes);
    if (packet.isControl || !header) continue;
    source = header->source;
    assembler->Add(*header, pieces);
  }
}

/// From the first whole key frame on all units are wanted. A key frame that the decoder finds damaged is passed over
/// here, because whoever takes the parts has only one try.
bool RtpFetch::Impl::IsWanted() {
  if (hasKeyFrame) return true;
  const bool takesRecoveryPoint = recorder::Clock::now() >= started + recorder::kKeyFramePatience;
  const bool isKey =
      unit.kind == recorder::UnitKind::kKey || (takesRecoveryPoint && unit.kind == recorder::UnitKind::kRecoveryPoint);
  hasKeyFrame = isKey && recorder::IsWholeKeyFrame(codec, depacketizer->Configuration(), unit.bytes);
  if (!hasKeyFrame) AskForKeyFrame();
  return hasKeyFrame;
}

/// Once: a camera with seconds between its key frames then sends one now.
void RtpFetch::Impl::AskForKeyFrame() {
  if (std::exchange(hasAskedForKeyFrame, true)) return;
  client->SendControl(recorder::KeyFrameRequest(source));
}

RtpFetch::RtpFetch(const std::string& host, int port, const std::string& path, const std::string& user,
                   const std::string& password, bool withAudio, const std::string& /*audioPath*/, int streamingType,
                   int rtspProtocol, int timeoutSeconds, const std::string& localAddress, const std::string& userAgent)
    : impl(std::make_unique<Impl>()) {
  impl->address = {host, port, user, password};
  impl->path = path;
  impl->userAgent = userAgent;
  impl->timeoutSeconds = timeoutSeconds;
  const bool isRtsp = streamingType == STREAMING_TYPE_RTSP || streamingType == STREAMING_TYPE_ANY;
  const bool isTcp = rtspProtocol == RTSP_PROTOCOL_TCP || rtspProtocol == RTSP_PROTOCOL_AUTO;
  impl->isSupported = isRtsp && isTcp && !withAudio && localAddress.empty();
}

RtpFetch::~RtpFetch() = default;

int RtpFetch::NextPartInfo(unsigned int& partNumber, char* /*header*/, unsigned int /*headerSize*/, int& headerLength) {
  headerLength = 0;  // a part of RTP has no textual header
  const recorder::Outcome outcome = impl->NextPart();
  // Until a picture is made of it, a part is no picture.
  recorder::RequestScope::Current().SetCause(outcome == recorder::Outcome::kOk ? recorder::Outcome::kNotUnderstood
                                                                               : outcome);
  if (outcome != recorder::Outcome::kOk) {
    VTPrintf(LOG_TYPE_FAILURE, "media", nullptr, "recorder/media/rtp_fetch", __LINE__, __func__,
             "No picture from the stream of %s: %s.\n", recorder::PlaceOf(impl->address).c_str(),
             std::string(recorder::Describe(outcome)).c_str());
    return -1;
  }
  partNumber = impl->nextPart++;
  return 0;
}

int RtpFetch::GetVideoFormat(ESFormat& format, int detail) {
  if (impl->codec == 0) return -1;
  ESFormat known;
  known.type = ES_CLOCK_LOCAL;
  known.codec = impl->codec;
  const auto configuration = impl->depacketizer->Configuration();
  if (detail == ES_FORMAT_WITH_CONFIGURATION && !configuration.empty()) {
    known.extradata = static_cast<unsigned char*>(std::malloc(configuration.size()));
    if (known.extradata == nullptr) throw std::bad_alloc();
    std::memcpy(known.extradata, configuration.data(), configuration.size());
    known.extradataSize = static_cast<int>(configuration.size());
  }
  format = known;
  return 0;
}

int RtpFetch::GetImgContentInfo(int& size, timeval& captureTime) {
  if (impl->part.empty()) return -1;
  size = static_cast<int>(impl->part.size());
  captureTime = impl->captureTime;
  return 0;
}

int RtpFetch::FetchContent(unsigned char* destination, unsigned int size) {
  if (impl->part.empty() || destination == nullptr || impl->part.size() > size) return -1;
  std::memcpy(destination, impl->part.data(), impl->part.size());
  return 0;
}
