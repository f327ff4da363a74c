#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace recorder {

/// The first video that a session description (RFC 8866) offers.
struct SdpVideo {
  std::string codec;           ///< encoding name in upper case ("H264", "H265", "MP4V-ES", "JPEG"), "" when not told
  std::string control;         ///< address of the video as it stands there, may be "" (RFC 2326 appendix C.1.1)
  std::string sessionControl;  ///< address of the whole session, likewise
  std::string description;     ///< a session description of this video alone, without any address of the camera's
  bool isEncrypted = false;    ///< its packets are SRTP (RFC 3711)
  int clockRate = 90'000;      ///< of the times in its packets, Hz
};

/// True for text that has lines of a session description. Some cameras begin without the version.
bool IsDescription(std::string_view text);

/// The first video section whose packets are plain RTP, else the first that is encrypted, or nothing. ONVIF's metadata
/// are no video, although they come as one (ONVIF Streaming section 5.2).
std::optional<SdpVideo> FindVideo(std::string_view sdp);

/// The encoding name of the first audio that is offered, in upper case ("PCMU", "MPEG4-GENERIC"); "" for none, or none
/// that has a name.
std::string FindAudio(std::string_view sdp);

/// The address that `control` stands for. Absolute ones stay; "" and "*" are `base`; anything else is appended with one
/// slash between. Cameras and their clients append; RFC 3986 would replace the last segment of a base that lacks the
/// slash.
std::string ResolveControl(std::string_view base, std::string_view control);

}  // namespace recorder
