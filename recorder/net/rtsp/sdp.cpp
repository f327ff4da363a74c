#include "recorder/net/rtsp/sdp.h"

#include <algorithm>

#include "recorder/utility/text.h"

namespace recorder {
namespace {

constexpr std::string_view kSessionLines = "v=0\r\no=- 0 0 IN IP4 0.0.0.0\r\ns=-\r\nt=0 0\r\n";

// Payload types (RFC 3551 section 6).
constexpr int kLargestType = 127;
constexpr int kStaticJpegType = 26;
constexpr int kFirstStaticVideo = 24;
constexpr int kLastStaticVideo = 34;

/// What an "m=" line tells.
struct Media {
  std::string_view kind;
  std::string_view transport;
  std::optional<int> payloadType;  // the first, which is the one that will be sent
};

/// The payload type that stands before the first blank of `rest`, and takes it off.
std::optional<int> TakePayloadType(std::string_view& rest) {
  const auto type = ParseNumber<int>(TakeUntil(rest, ' '));
  return type && *type >= 0 && *type <= kLargestType ? type : std::nullopt;
}

Media ParseMedia(std::string_view value) {
  Media media;
  media.kind = TakeUntil(value, ' ');
  TakeUntil(value, ' ');  // the port
  media.transport = TakeUntil(value, ' ');
  media.payloadType = TakePayloadType(value);
  return media;
}

bool IsReadableVideo(const Media& media) {
  const bool isPlainRtp = media.transport.starts_with("RTP/AVP");  // RTP/SAVP is encrypted
  return media.kind == "video" && isPlainRtp && media.payloadType;
}

/// The value of attribute line `a=name:value`, or nothing when the line is another.
std::optional<std::string_view> Attribute(std::string_view line, std::string_view name) {
  if (!line.starts_with("a=") || !StartsWithIgnoreCase(line.substr(2), name)) return std::nullopt;
  line.remove_prefix(2 + name.size());
  if (!line.starts_with(':')) return std::nullopt;
  return Trimmed(line.substr(1));
}

std::string UpperCase(std::string_view text) {
  std::string upper(text);
  std::transform(upper.begin(), upper.end(), upper.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
  return upper;
}

/// Takes over the encoding that an rtpmap names. False when the payload format is chosen without that line.
bool TakeEncoding(SdpVideo& video, int payloadType, std::string_view map) {
  if (!video.codec.empty()) return false;
  video.codec = UpperCase(Trimmed(map.substr(0, map.find('/'))));
  return payloadType < kFirstStaticVideo || payloadType > kLastStaticVideo;
}

/// Takes over one line of the video's own section. Into the description goes what payload formats read and no more:
/// libavformat takes the first rtpmap for this video's, whatever its payload type, loses memory with some later ones,
/// and opens other formats that further attributes hold.
void AddLine(SdpVideo& video, const Media& media, std::string_view line) {
  if (const auto control = Attribute(line, "control")) video.control = *control;
  for (const std::string_view name : {"rtpmap", "fmtp", "framesize"}) {
    auto value = Attribute(line, name);
    if (!value || TakePayloadType(*value) != media.payloadType) continue;
    const std::string type = std::to_string(*media.payloadType);
    const std::string_view rest = Trimmed(*value);
    if (name == "rtpmap" && !TakeEncoding(video, *media.payloadType, rest)) continue;
    video.description.append("a=").append(name).append(":").append(type).append(" ").append(rest).append("\r\n");
  }
}

/// Takes one line, whichever of the line ends of libavformat is behind it.
std::string_view TakeLine(std::string_view& rest) {
  const std::string_view line = rest.substr(0, rest.find_first_of(std::string_view("\r\n\0", 3)));
  rest.remove_prefix(std::min(line.size() + 1, rest.size()));
  return Trimmed(line);
}

}  // namespace

std::optional<SdpVideo> FindVideo(std::string_view sdp) {
  SdpVideo video;
  Media media;
  bool isSession = true;
  while (!sdp.empty()) {
    const std::string_view line = TakeLine(sdp);
    if (line.starts_with("m=")) {
      if (IsReadableVideo(media)) return video;
      isSession = false;
      media = ParseMedia(line.substr(2));
      if (!IsReadableVideo(media)) continue;
      video.codec = media.payloadType == kStaticJpegType ? "JPEG" : "";
      video.description.assign(kSessionLines).append("m=video 0 RTP/AVP ");
      video.description.append(std::to_string(*media.payloadType)).append("\r\n");
    } else if (isSession) {
      if (const auto control = Attribute(line, "control")) video.sessionControl = *control;
    } else if (IsReadableVideo(media)) {
      AddLine(video, media, line);
    }
  }
  return IsReadableVideo(media) ? std::optional(video) : std::nullopt;
}

std::string ResolveControl(std::string_view base, std::string_view control) {
  if (control.empty() || control == "*") return std::string(base);
  if (control.find("://") != std::string_view::npos) return std::string(control);
  const bool hasSlash = base.ends_with('/') || control.starts_with('/');
  if (base.ends_with('/') && control.starts_with('/')) control.remove_prefix(1);
  return std::string(base).append(hasSlash ? "" : "/").append(control);
}

}  // namespace recorder
