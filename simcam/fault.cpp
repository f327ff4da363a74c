#include "simcam/fault.h"

#include <algorithm>
#include <cctype>
#include <iterator>

namespace simcam {
namespace {

/// Which server a fault needs.
enum Concerns {
  kRtsp,     ///< the scripted RTSP server; HTTP may have the fault, too
  kUdp,      ///< the same, which then sends over UDP alone
  kNotRtsp,  ///< RTSP works as usual
};

struct FaultRow {
  const char* name;
  Fault fault;
  Concerns concerns;
  const char* effect;
};

constexpr FaultRow kFaultRows[] = {
    {"none", Fault::kNone, kNotRtsp, "a healthy camera"},
    {"refused", Fault::kRefused, kRtsp, "the port is reserved, but nothing listens: connections are refused"},
    {"silentAfterConnect", Fault::kSilentAfterConnect, kRtsp, "accepts, reads, never answers (RTSP and HTTP)"},
    {"silentAfterDescribe", Fault::kSilentAfterDescribe, kRtsp, "answers DESCRIBE, then nothing more"},
    {"silentAfterSetup", Fault::kSilentAfterSetup, kRtsp, "answers SETUP, then nothing more"},
    {"silentAfterPlay", Fault::kSilentAfterPlay, kRtsp, "answers PLAY, sends no packet"},
    {"silentInUnit", Fault::kSilentInUnit, kRtsp,
     "stops within the first key frame, within a packet; HTTP: within the picture"},
    {"closeAfterConnect", Fault::kCloseAfterConnect, kRtsp,
     "closes as soon as the first request comes (RTSP and HTTP)"},
    {"closeAfterDescribe", Fault::kCloseAfterDescribe, kRtsp, "closes after the answer to DESCRIBE"},
    {"closeAfterSetup", Fault::kCloseAfterSetup, kRtsp, "closes after the answer to SETUP"},
    {"closeAfterPlay", Fault::kCloseAfterPlay, kRtsp, "closes after the answer to PLAY"},
    {"closeInUnit", Fault::kCloseInUnit, kRtsp, "closes within the first key frame; HTTP: within the picture"},
    {"garbage", Fault::kGarbage, kRtsp, "answers every request with random bytes and closes"},
    {"notRtsp", Fault::kNotRtsp, kRtsp, "an HTTP server: RTSP requests get HTTP/1.1 400"},
    {"notHttp", Fault::kNotHttp, kNotRtsp, "an RTSP server: HTTP requests get RTSP/1.0 400"},
    {"drip", Fault::kDrip, kRtsp, "answers one byte a second (DESCRIBE and pictures)"},
    {"hugeLength", Fault::kHugeLength, kRtsp, "claims a Content-Length of 2,147,483,647, sends little and waits"},
    {"endlessBody", Fault::kEndlessBody, kRtsp, "a body (SDP or picture) that never ends"},
    {"endlessHeader", Fault::kEndlessHeader, kRtsp, "header lines that never end"},
    {"staleNonce", Fault::kStaleNonce, kRtsp, "refuses the first right Digest login with stale=true, takes the next"},
    {"alwaysStale", Fault::kAlwaysStale, kRtsp, "refuses every right Digest login with stale=true"},
    {"closeWith401", Fault::kCloseWith401, kRtsp, "closes the connection after each 401"},
    {"hangUpWith401", Fault::kHangUpWith401, kRtsp, "RTSP: the same, without announcing it"},
    {"hangUpBehind401", Fault::kHangUpBehind401, kRtsp,
     "RTSP: the same, a moment later, so that a login may meet the end"},
    {"hangUpOnLogin", Fault::kHangUpOnLogin, kRtsp, "RTSP: closes the connection instead of answering a wrong login"},
    {"resetOnLogin", Fault::kResetOnLogin, kRtsp, "RTSP: resets the connection instead of answering a wrong login"},
    {"loginAtPlay", Fault::kLoginAtPlay, kRtsp, "RTSP: asks for a login at PLAY only"},
    {"lockOut", Fault::kLockOut, kRtsp, "after three wrong logins every login gets 403, the right one too"},
    {"optionsFirst", Fault::kOptionsFirst, kRtsp,
     "RTSP: 455 to DESCRIBE on a connection that has not brought OPTIONS yet"},
    {"udpAnswer", Fault::kUdpAnswer, kUdp,
     "UDP alone: answers a SETUP over TCP with ports of UDP, which it does not use"},
    {"udpSilent", Fault::kUdpSilent, kUdp, "UDP alone: sends nothing, as behind a firewall"},
    {"udpFirewall", Fault::kUdpFirewall, kUdp, "UDP alone: sends nothing until the client has sent something"},
    {"udpDisorder", Fault::kUdpDisorder, kUdp, "UDP alone: packets change places, and some come twice"},
    {"udpOtherHost", Fault::kUdpOtherHost, kUdp, "UDP alone: names and uses 127.0.0.2 as the sender"},
    {"udpOtherPort", Fault::kUdpOtherPort, kUdp, "UDP alone: sends from another port than it names"},
    {"udpVague", Fault::kUdpVague, kUdp,
     "UDP alone: names no port of its own, an address of an inner network, and wrong ports of the client"},
    {"udpMulticast", Fault::kUdpMulticast, kUdp, "UDP alone: grants multicast, whatever was asked"},
    {"getSilent", Fault::kGetSilent, kNotRtsp, "an RTSP server: never answers HTTP"},
    {"badSdp", Fault::kBadSdp, kRtsp, "answers DESCRIBE with text that is no SDP"},
    {"sdpBlanks", Fault::kSdpBlanks, kRtsp, "two blanks between the words of the \"m=\" line"},
    {"sdpLowerCase", Fault::kSdpLowerCase, kRtsp, "the profile is \"rtp/avp\""},
    {"sdpTcpProfile", Fault::kSdpTcpProfile, kRtsp, "the profile is \"TCP/RTP/AVP\""},
    {"sdpMetadataFirst", Fault::kSdpMetadataFirst, kRtsp, "an \"m=video\" of ONVIF metadata comes before the video"},
    {"sdpNoVersion", Fault::kSdpNoVersion, kRtsp, "the description has no \"v=\" line"},
    {"sdpHevc", Fault::kSdpHevc, kRtsp, "H.265 is named \"HEVC\""},
    {"sdpEncrypted", Fault::kSdpEncrypted, kRtsp, "the profile is \"RTP/SAVP\" (SRTP)"},
    {"sdpEncryptedFeedback", Fault::kSdpEncryptedFeedback, kRtsp, "the profile is \"RTP/SAVPF\" (SRTP)"},
    {"sdpVp8", Fault::kSdpVp8, kRtsp, "H.264 is named \"VP8\""},
    {"sdpH263", Fault::kSdpH263, kRtsp, "H.264 is named \"H263-1998\""},
    {"sdpMp2t", Fault::kSdpMp2t, kRtsp, "the payload type is 33, an MPEG transport stream"},
    {"sdpNoRtpmap", Fault::kSdpNoRtpmap, kRtsp, "no line names the codec"},
    {"noCseq", Fault::kNoCseq, kRtsp, "RTSP answers lack CSeq"},
    {"controlAbsolute", Fault::kControlAbsolute, kRtsp, "control addresses are absolute and elsewhere (/media/video)"},
    {"controlNoSlash", Fault::kControlNoSlash, kRtsp, "relative control address, Content-Base without the final slash"},
    {"controlNoBase", Fault::kControlNoBase, kRtsp, "relative control address, no Content-Base"},
    {"controlBreaksLine", Fault::kControlBreaksLine, kRtsp, "Content-Base holds a line break and a header of its own"},
    {"otherChannels", Fault::kOtherChannels, kRtsp, "grants interleaved channels 4-5, whatever was asked"},
    {"rtpBeforePlay", Fault::kRtpBeforePlay, kRtsp, "the first key frame comes before the answer to PLAY, glued to it"},
    {"strayBytes", Fault::kStrayBytes, kRtsp, "zeros, line ends or text before every packet"},
    {"strayFrames", Fault::kStrayFrames, kRtsp,
     "before every packet a '$' that begins no frame, also with the right channel"},
    {"requestInStream", Fault::kRequestInStream, kRtsp, "sends OPTIONS itself, between packets of each key frame"},
    {"parameterSetsBetweenSlices", Fault::kParameterSetsBetweenSlices, kRtsp,
     "H.264: SPS and PPS again between two slices"},
    {"parameterSetsAlone", Fault::kParameterSetsAlone, kRtsp,
     "H.264: SPS and PPS as a unit of their own, before the key frame"},
    {"markerOnEveryUnit", Fault::kMarkerOnEveryUnit, kRtsp,
     "H.264, H.265: four slices a picture, the RTP marker on each and on parameter sets"},
    {"timestampPerSlice", Fault::kTimestampPerSlice, kRtsp, "H.264, H.265: four slices, each with a timestamp"},
    {"noMarker", Fault::kNoMarker, kRtsp, "no RTP marker at all"},
    {"lostPacket", Fault::kLostPacket, kRtsp,
     "a packet of the first key frame is missing, the next key frame is whole"},
    {"damagedKeyFrame", Fault::kDamagedKeyFrame, kRtsp, "flipped bytes in the first key frame, the next is good"},
    {"sessionTimeout", Fault::kSessionTimeout, kRtsp, "closes a session after 5 s without a request, as announced"},
    {"redirectRtsp", Fault::kRedirectRtsp, kRtsp, "RTSP: DESCRIBE gets 302 to the address in \"redirectTo\""},
    {"halfJpeg", Fault::kHalfJpeg, kNotRtsp, "HTTP: half a JPEG, as a complete answer"},
    {"halfJpegWithEnd", Fault::kHalfJpegWithEnd, kNotRtsp, "HTTP: half of each JPEG, and an end marker behind it"},
    {"noEndMarker", Fault::kNoEndMarker, kNotRtsp, "HTTP: JPEGs without an end marker"},
    {"noContentType", Fault::kNoContentType, kNotRtsp, "motion JPEG: the answer has no Content-Type"},
    {"otherBoundary", Fault::kOtherBoundary, kNotRtsp, "motion JPEG: a boundary other than the header's"},
    {"noFirstBoundary", Fault::kNoFirstBoundary, kNotRtsp, "motion JPEG: the first part has no boundary before it"},
    {"rawJpegs", Fault::kRawJpegs, kNotRtsp, "motion JPEG: one JPEG after the other as \"image/jpeg\", for ever"},
    {"partLengthZero", Fault::kPartLengthZero, kNotRtsp, "motion JPEG: Content-Length 0 of each part"},
    {"partLengthShort", Fault::kPartLengthShort, kNotRtsp, "motion JPEG: Content-Length of each part 3 too low"},
    {"partLengthLong", Fault::kPartLengthLong, kNotRtsp, "motion JPEG: Content-Length of each part 3 too high"},
    {"blankLineFirst", Fault::kBlankLineFirst, kNotRtsp, "motion JPEG: a blank line more before each JPEG"},
    {"longPartHeaders", Fault::kLongPartHeaders, kNotRtsp, "motion JPEG: 9 KB of header lines before each JPEG"},
    {"icyStatus", Fault::kIcyStatus, kNotRtsp, "motion JPEG: the status line is \"ICY 200 OK\""},
    {"wantsUserAgent", Fault::kWantsUserAgent, kNotRtsp,
     "HTTP: 403 for a picture to a client that does not name itself"},
    {"htmlPage", Fault::kHtmlPage, kNotRtsp, "HTTP: a page with status 200 instead of a picture"},
    {"emptyBody", Fault::kEmptyBody, kNotRtsp, "HTTP: status 200, no body"},
    {"redirectSame", Fault::kRedirectSame, kNotRtsp, "HTTP: 302 to /moved, where the picture is"},
    {"redirectOther", Fault::kRedirectOther, kNotRtsp, "HTTP: 302 to the camera or address in \"redirectTo\""},
    {"redirectLoop", Fault::kRedirectLoop, kNotRtsp, "HTTP: 302 to the same address, for ever"},
};

/// Of a fault that has a row.
Concerns ConcernsOf(Fault fault) { return std::ranges::find(kFaultRows, fault, &FaultRow::fault)->concerns; }

constexpr const char* kStatusPrefixes[] = {"describe", "setup", "play", "tcp", "http", "get"};

std::optional<FaultConfig> StatusFault(std::string_view name) {
  for (const std::string_view prefix : kStatusPrefixes) {
    if (!name.starts_with(prefix) || name.size() != prefix.size() + 3) continue;
    const std::string digits(name.substr(prefix.size()));
    if (!std::all_of(digits.begin(), digits.end(), [](unsigned char c) { return std::isdigit(c) != 0; })) continue;
    FaultConfig fault{Fault::kStatus, std::string(prefix), std::stoi(digits)};
    std::transform(fault.method.begin(), fault.method.end(), fault.method.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return fault;
  }
  return std::nullopt;
}

}  // namespace

std::optional<FaultConfig> FaultFromName(std::string_view name) {
  for (const FaultRow& row : kFaultRows) {
    if (name == row.name) return FaultConfig{row.fault, {}, 0};
  }
  return StatusFault(name);
}

bool OnlyHttp(const FaultConfig& fault) {
  return fault.fault == Fault::kStatus ? fault.method == "HTTP" || fault.method == "GET"
                                       : ConcernsOf(fault.fault) == kNotRtsp;
}

bool SendsOverUdp(const FaultConfig& fault) {
  return fault.fault == Fault::kStatus ? fault.method == "TCP" : ConcernsOf(fault.fault) == kUdp;
}

std::string FaultHelp() {
  std::string help;
  for (const FaultRow& row : kFaultRows) {
    std::string name = row.name;
    name.resize(28, ' ');
    help += "  " + name + row.effect + "\n";
  }
  return help +
         "  describeNNN setupNNN playNNN  that request gets status NNN (RTSP), for example setup453\n"
         "  tcpNNN                        UDP alone: a SETUP over TCP gets status NNN\n"
         "  httpNNN                       every picture gets status NNN (HTTP)\n"
         "  getNNN                        an RTSP server: HTTP gets status NNN without a length, and no end\n";
}

}  // namespace simcam
