#include "simcam/sdp_faults.h"

#include <cstring>

namespace simcam {
namespace {

/// What a fault puts in the place of the first `usual` of the description.
struct Spoiling {
  Fault fault;
  const char* usual;
  const char* instead;
};

constexpr Spoiling kSpoilings[] = {
    {Fault::kSdpBlanks, "m=video ", "m=video  "},
    {Fault::kSdpBlanks, "RTP/AVP ", " RTP/AVP  "},
    {Fault::kSdpLowerCase, "RTP/AVP", "rtp/avp"},
    {Fault::kSdpTcpProfile, "RTP/AVP", "TCP/RTP/AVP"},
    {Fault::kSdpMetadataFirst, "m=video",
     "m=video 0 RTP/AVP 107\r\na=rtpmap:107 vnd.onvif.metadata/90000\r\na=control:trackID=9\r\nm=video"},
    {Fault::kSdpNoVersion, "v=0\r\n", ""},
    {Fault::kSdpHevc, "H265/", "HEVC/"},
    {Fault::kSdpEncrypted, "RTP/AVP", "RTP/SAVP"},
    {Fault::kSdpEncryptedFeedback, "RTP/AVP", "RTP/SAVPF"},
    {Fault::kSdpVp8, "H264/", "VP8/"},
    {Fault::kSdpH263, "H264/", "H263-1998/"},
    {Fault::kSdpMp2t, "RTP/AVP 96", "RTP/AVP 33"},
    {Fault::kSdpNoRtpmap, "a=rtpmap", "a=tool"},
};

}  // namespace

std::string SpoiltSdp(Fault fault, std::string sdp) {
  for (const Spoiling& spoiling : kSpoilings) {
    const size_t at = spoiling.fault == fault ? sdp.find(spoiling.usual) : std::string::npos;
    if (at != std::string::npos) sdp.replace(at, std::strlen(spoiling.usual), spoiling.instead);
  }
  return sdp;
}

}  // namespace simcam
