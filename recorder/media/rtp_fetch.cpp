#include <sys/time.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "platform/media.h"
#include "platform/utility.h"
#include "recorder/media/codecs.h"
#include "recorder/media/key_frame_request.h"
#include "recorder/media/key_frame_search.h"
#include "recorder/net/rtsp/rtsp_client.h"
#include "recorder/net/source_path.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/log.h"

namespace recorder {
namespace {

/// After this long without a key frame a point of recovery will do: some encoders never send an IDR again.
constexpr std::chrono::seconds kKeyFramePatience{2};

/// How long one call for a key frame, beside the stream, may keep us from reading that. Of what comes over UDP
/// meanwhile, the system keeps little.
constexpr std::chrono::milliseconds kLongestCall{1000};
constexpr std::chrono::milliseconds kLongestCallOverUdp{300};
constexpr std::chrono::seconds kBetweenCalls{1};

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
  recorder::StreamPlace place;  // as it was handed in
  std::string userAgent;
  int timeoutSeconds = 0;
  bool isSupported = false;
  recorder::Outcome read = recorder::Outcome::kOk;  // of `path`, which was perhaps a whole address

  std::optional<recorder::RtspClient> client;
  std::optional<recorder::KeyFrameSearch> search;
  bool isOpen = false;
  recorder::KeyFramePace requests;     // for a key frame
  recorder::Clock::time_point callAt;  // the next, beside the stream
  recorder::Clock::time_point started;

  std::string part;  // a JPEG; "": none yet
  timeval captureTime{};
  unsigned int nextPart = 0;

  recorder::Outcome Open();
  recorder::Outcome OpenSearch();
  recorder::Outcome NextPart();
  recorder::Outcome ReadUnits();
  recorder::Outcome Look();
  void AskForKeyFrame(bool isDamaged);
  void CallForKeyFrame();
};

/// Everything up to the running stream.
recorder::Outcome RtpFetch::Impl::Open() {
  using recorder::Outcome;
  if (!isSupported) return Outcome::kNotUnderstood;
  if (read != Outcome::kOk) return read;
  client.emplace(address, path, recorder::DeadlineOf(timeoutSeconds), userAgent.empty() ? "recorder" : userAgent);
  search.emplace([this](std::span<const std::uint8_t> packet) { client->SendControl(packet); });
  if (const Outcome outcome = client->Describe(); outcome != Outcome::kOk) return outcome;
  if (const Outcome outcome = OpenSearch(); outcome != Outcome::kOk) return outcome;
  recorder::RequestScope::Current().Rungs().Enter(recorder::Rung::kKeyFrame);
  const auto asked = recorder::Clock::now();
  if (const Outcome outcome = client->Setup(); outcome != Outcome::kOk) return outcome;
  requests = recorder::KeyFramePace(recorder::Clock::now() - asked);
  if (const Outcome outcome = client->Play(); outcome != Outcome::kOk) return outcome;
  started = recorder::Clock::now();
  return Outcome::kOk;
}

recorder::Outcome RtpFetch::Impl::OpenSearch() {
  const recorder::Outcome outcome = search->Open(client->Video().description);
  if (outcome == recorder::Outcome::kNoVideo) {
    recorder::LogFailure("The stream of " + recorder::PlaceOf(address) + " is in " +
                         std::string(recorder::DescribeEncoding(client->Video().codec)) + ".");
  }
  isOpen = outcome == recorder::Outcome::kOk;
  return outcome;
}

/// A key frame has to be decoded to be judged: whoever takes the parts has only one try, so that a damaged one must be
/// passed over here. What is decoded is handed on: a part is the picture itself, as a JPEG, whatever the camera sends.
recorder::Outcome RtpFetch::Impl::NextPart() {
  using recorder::Outcome;
  part.clear();
  if (!client) {
    if (const Outcome outcome = Open(); outcome != Outcome::kOk) return outcome;
  }
  while (part.empty()) {
    if (const Outcome outcome = ReadUnits(); outcome != Outcome::kOk) return outcome;
    if (const Outcome outcome = Look(); outcome != Outcome::kOk) return outcome;
  }
  captureTime = recorder::Now();
  return Outcome::kOk;
}

/// Hands on packets, up to one that ends a unit.
recorder::Outcome RtpFetch::Impl::ReadUnits() {
  using recorder::Outcome;
  recorder::InterleavedPacket packet;
  for (;;) {
    if (const Outcome outcome = client->Read(packet); outcome != Outcome::kOk) return outcome;
    if (search->Feed(packet.bytes, packet.isControl)) return Outcome::kOk;
  }
}

/// Takes the part, if there is one. kNotUnderstood: no JPEG can be made of such pictures.
recorder::Outcome RtpFetch::Impl::Look() {
  using State = recorder::KeyFrameSearch::State;
  recorder::RungTimes& rungs = recorder::RequestScope::Current().Rungs();
  rungs.Enter(recorder::Rung::kDecode);
  const State state = search->Look(recorder::Clock::now() >= started + recorder::kKeyFramePatience);
  rungs.Enter(recorder::Rung::kKeyFrame);
  switch (state) {
    case State::kPicture:
      part = search->TakePicture();
      break;
    case State::kNoKeyFrame:
      AskForKeyFrame(false);
      break;
    case State::kDamaged:
      AskForKeyFrame(true);
      break;
    case State::kRefused:
      return recorder::Outcome::kNotUnderstood;
    case State::kFailed:
      return search->Failure();
    case State::kMore:
      break;
  }
  return recorder::Outcome::kOk;
}

/// A camera with many seconds between its key frames then sends one now.
void RtpFetch::Impl::AskForKeyFrame(bool isDamaged) {
  using recorder::Clock;
  if (!requests.IsDue(Clock::now(), isDamaged)) return;
  client->SendControl(recorder::KeyFrameRequest(search->Source(), static_cast<std::uint8_t>(requests.Count())));
  if (requests.Count() > 0) CallForKeyFrame();
  requests.Sent(Clock::now());
}

/// Asks beside the stream (ONVIF), which is done only where the camera runs the stream, so that the login is proven or
/// none is needed, and where the first request has brought nothing: it costs several round trips, and keeps us from
/// reading. So it is done once a second at the most; a call that takes too long is given up and not made again.
void RtpFetch::Impl::CallForKeyFrame() {
  using recorder::Clock;
  const Clock::time_point now = Clock::now();
  if (now < callAt) return;
  const auto longest = client->IsOverUdp() ? recorder::kLongestCallOverUdp : recorder::kLongestCall;
  recorder::RequestScope::Current().CallForKeyFrame(place, address.user, address.password, now + longest);
  callAt = Clock::now() + recorder::kBetweenCalls;
}

RtpFetch::RtpFetch(const std::string& host, int port, const std::string& path, const std::string& user,
                   const std::string& password, bool withAudio, const std::string& /*audioPath*/, int streamingType,
                   int rtspProtocol, int timeoutSeconds, const std::string& localAddress, const std::string& userAgent)
    : impl(std::make_unique<Impl>()) {
  impl->address = {host, port, user, password};
  impl->path = path;
  impl->place = {host, port, path};
  impl->read = recorder::TakeApart(impl->path, impl->address);
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
  recorder::RequestScope::Current().Rungs().Enter(recorder::Rung::kNone);
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

int RtpFetch::GetVideoFormat(ESFormat& format, int /*detail*/) {
  if (!impl->isOpen) return -1;
  format = {};  // a JPEG has no configuration
  format.type = ES_CLOCK_LOCAL;
  format.codec = kCodecJpeg;
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
  std::ranges::copy(impl->part, destination);
  return 0;
}
