#include "recorder/net/sdp.h"

#include <algorithm>

#include "recorder/net/text.h"

namespace recorder {
namespace {

constexpr std::string_view kSessionLines = "v=0\r\no=- 0 0 IN IP4 0.0.0.0\r\ns=-\r\nt=0 0\r\n";
constexpr std::string_view kStaticJpegType = "26";  // RFC 3551 section 6

/// What an "m=" line tells.
struct Media {
  std::string_view kind;
  std::string_view transport;
  std::string_view payloadType;  // the first, which is the one that will be sent
};

Media ParseMedia(std::string_view value) {
  Media media;
  media.kind = TakeUntil(value, ' ');
  TakeUntil(value, ' ');  // the port
  media.transport = TakeUntil(value, ' ');
  media.payloadType = TakeUntil(value, ' ');
  return media;
}

bool IsReadableVideo(const Media& media) {
  const bool isPlainRtp = media.transport.starts_with("RTP/AVP");  // RTP/SAVP is encrypted
  return media.kind == "video" && isPlainRtp && !media.payloadType.empty();
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

/// Takes over one line of the video's own section.
void AddLine(SdpVideo& video, const Media& media, std::string_view line) {
  if (const auto control = Attribute(line, "control")) {
    video.control = *control;
    return;
  }
  if (auto map = Attribute(line, "rtpmap"); map && TakeUntil(*map, ' ') == media.payloadType) {
    std::string_view encoding = Trimmed(*map);
    video.codec = UpperCase(TakeUntil(encoding, '/'));
  }
  if (line.starts_with("a=")) video.description.append(line).append("\r\n");
}

}  // namespace

std::optional<SdpVideo> FindVideo(std::string_view sdp) {
  SdpVideo video;
  Media media;
  bool isSession = true;
  while (!sdp.empty()) {
    const std::string_view line = Trimmed(TakeUntil(sdp, '\n'));
    if (line.starts_with("m=")) {
      if (IsReadableVideo(media)) return video;
      isSession = false;
      media = ParseMedia(line.substr(2));
      if (!IsReadableVideo(media)) continue;
      video.codec = media.payloadType == kStaticJpegType ? "JPEG" : "";
      video.description.assign(kSessionLines).append("m=video 0 RTP/AVP ").append(media.payloadType).append("\r\n");
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
