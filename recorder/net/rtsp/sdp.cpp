#include "recorder/net/rtsp/sdp.h"

#include <algorithm>
#include <utility>

#include "recorder/utility/text.h"
#include "recorder/utility/translate.h"

namespace recorder {
namespace {

constexpr std::string_view kSessionLines = "v=0\r\no=- 0 0 IN IP4 0.0.0.0\r\ns=-\r\nt=0 0\r\n";

// Payload types (RFC 3551 section 6).
constexpr int kLargestType = 127;
constexpr int kFirstStaticVideo = 24;
constexpr int kLastStaticVideo = 34;
constexpr std::pair<int, std::string_view> kStaticEncodings[] = {
    {26, "JPEG"}, {31, "H261"}, {32, "MPV"}, {33, "MP2T"}, {34, "H263"}};

constexpr std::pair<int, std::string_view> kStaticAudio[] = {{0, "PCMU"}, {3, "GSM"},  {4, "G723"}, {8, "PCMA"},
                                                             {9, "G722"}, {10, "L16"}, {11, "L16"}, {14, "MPA"}};

constexpr std::string_view kMetadata = "VND.ONVIF.METADATA";

std::string UpperCase(std::string_view text) {
  std::string upper(text);
  std::transform(upper.begin(), upper.end(), upper.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
  return upper;
}

enum class Profile { kOther, kPlain, kEncrypted };

/// What an "m=" line tells.
struct Media {
  bool isVideo = false;
  bool isAudio = false;
  Profile profile = Profile::kOther;
  std::optional<int> payloadType;  // the first, which is the one that will be sent
};

/// Takes the next word off the front of `rest`, however many blanks stand before it.
std::string_view TakeWord(std::string_view& rest) {
  rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
  return TakeUntil(rest, ' ');
}

/// Takes the payload type off the front of `rest`.
std::optional<int> TakePayloadType(std::string_view& rest) {
  const auto type = ParseNumber<int>(TakeWord(rest));
  return type && *type >= 0 && *type <= kLargestType ? type : std::nullopt;
}

/// Of a transport such as "RTP/AVP", "TCP/RTP/AVP" (RFC 4571) or "UDP/TLS/RTP/SAVPF" (RFC 5764).
Profile ProfileOf(std::string_view transport) {
  const std::string upper = UpperCase(transport);
  if (upper.find("RTP/SAVP") != std::string::npos) return Profile::kEncrypted;
  return upper.starts_with("RTP/AVP") || upper.starts_with("TCP/RTP/AVP") ? Profile::kPlain : Profile::kOther;
}

Media ParseMedia(std::string_view value) {
  Media media;
  const std::string_view kind = TakeWord(value);
  media.isVideo = EqualsIgnoreCase(kind, "video");
  media.isAudio = EqualsIgnoreCase(kind, "audio");
  TakeWord(value);  // the port
  media.profile = ProfileOf(TakeWord(value));
  media.payloadType = TakePayloadType(value);
  return media;
}

bool IsReadable(const Media& media) { return media.isVideo && media.profile != Profile::kOther && media.payloadType; }

/// The value of attribute line `a=name:value`, or nothing when the line is another.
std::optional<std::string_view> Attribute(std::string_view line, std::string_view name) {
  if (!line.starts_with("a=") || !StartsWithIgnoreCase(line.substr(2), name)) return std::nullopt;
  line.remove_prefix(2 + name.size());
  if (!line.starts_with(':')) return std::nullopt;
  return Trimmed(line.substr(1));
}

/// The encoding that an rtpmap names.
std::string EncodingOf(std::string_view map) {
  std::string name = UpperCase(Trimmed(map.substr(0, map.find('/'))));
  return name == "HEVC" ? "H265" : name;
}

/// The clock of an rtpmap, such as "H264/90000".
int ClockRateOf(std::string_view map) {
  TakeUntil(map, '/');
  const int rate = ParseNumber<int>(Trimmed(TakeUntil(map, '/'))).value_or(0);
  return rate > 0 ? rate : SdpVideo().clockRate;
}

/// Takes over the encoding that an rtpmap names. False when the payload format is chosen without that line.
bool TakeEncoding(SdpVideo& video, int payloadType, std::string_view map) {
  if (!video.codec.empty()) return false;
  video.codec = EncodingOf(map);
  video.clockRate = ClockRateOf(map);
  return payloadType < kFirstStaticVideo || payloadType > kLastStaticVideo;
}

/// Takes over one line of the video's own section. Into the description goes what payload formats read and no more:
/// libavformat takes the first rtpmap for this video's, whatever its payload type, loses memory with some later ones,
/// and opens other formats that further attributes hold.
void AddLine(SdpVideo& video, int payloadType, std::string_view line) {
  if (const auto control = Attribute(line, "control")) video.control = *control;
  for (const std::string_view name : {"rtpmap", "fmtp", "framesize"}) {
    auto value = Attribute(line, name);
    if (!value || TakePayloadType(*value) != payloadType) continue;
    std::string rest(Trimmed(*value));
    if (name == "rtpmap") {
      if (!TakeEncoding(video, payloadType, rest)) continue;
      rest.replace(0, rest.find('/'), video.codec);
    }
    const std::string type = std::to_string(payloadType);
    video.description.append("a=").append(name).append(":").append(type).append(" ").append(rest).append("\r\n");
  }
}

SdpVideo BeginVideo(const Media& media) {
  SdpVideo video;
  video.codec = Translate(kStaticEncodings, *media.payloadType, std::string_view());
  video.isEncrypted = media.profile == Profile::kEncrypted;
  video.description.append(kSessionLines).append("m=video 0 RTP/AVP ");
  video.description.append(std::to_string(*media.payloadType)).append("\r\n");
  return video;
}

/// Keeps `section` in `best` if it is a video, and the first or the first that can be read.
void Keep(std::optional<SdpVideo>&& section, std::optional<SdpVideo>& best) {
  if (!section || section->codec == kMetadata) return;
  if (!best || (best->isEncrypted && !section->isEncrypted)) best = std::move(section);
}

/// Takes one line, whichever of the line ends of libavformat is behind it.
std::string_view TakeLine(std::string_view& rest) {
  const std::string_view line = rest.substr(0, rest.find_first_of(std::string_view("\r\n\0", 3)));
  rest.remove_prefix(std::min(line.size() + 1, rest.size()));
  return Trimmed(line);
}

}  // namespace

bool IsDescription(std::string_view text) {
  while (!text.empty()) {
    const std::string_view line = TakeLine(text);
    if (StartsWithIgnoreCase(line, "v=") || line.starts_with("m=")) return true;
  }
  return false;
}

std::optional<SdpVideo> FindVideo(std::string_view sdp) {
  std::optional<SdpVideo> best;
  std::optional<SdpVideo> section;  // the one at hand, if it is a video
  Media media;
  std::string sessionControl;
  bool isSession = true;
  while (!sdp.empty()) {
    const std::string_view line = TakeLine(sdp);
    if (line.starts_with("m=")) {
      isSession = false;
      Keep(std::exchange(section, std::nullopt), best);
      media = ParseMedia(line.substr(2));
      if (IsReadable(media)) section = BeginVideo(media);
    } else if (isSession) {
      if (const auto control = Attribute(line, "control")) sessionControl = *control;
    } else if (section) {
      AddLine(*section, *media.payloadType, line);
    }
  }
  Keep(std::move(section), best);
  if (best) best->sessionControl = sessionControl;
  return best;
}

std::string FindAudio(std::string_view sdp) {
  Media media;
  while (!sdp.empty()) {
    const std::string_view line = TakeLine(sdp);
    if (line.starts_with("m=")) {
      if (media.isAudio) break;
      media = ParseMedia(line.substr(2));
    } else if (auto map = Attribute(line, "rtpmap"); map && media.isAudio) {
      if (TakePayloadType(*map) == media.payloadType) return EncodingOf(Trimmed(*map));
    }
  }
  return media.isAudio ? std::string(Translate(kStaticAudio, media.payloadType.value_or(-1), "")) : "";
}

std::string ResolveControl(std::string_view base, std::string_view control) {
  if (control.empty() || control == "*") return std::string(base);
  if (control.find("://") != std::string_view::npos) return std::string(control);
  const bool hasSlash = base.ends_with('/') || control.starts_with('/');
  if (base.ends_with('/') && control.starts_with('/')) control.remove_prefix(1);
  return std::string(base).append(hasSlash ? "" : "/").append(control);
}

}  // namespace recorder
