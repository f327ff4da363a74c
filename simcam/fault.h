#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace simcam {

/// What a camera does wrong. `kFaultRows` in fault.cpp names each and says what it does.
enum class Fault {
  kNone,
  kRefused,
  kSilentAfterConnect,
  kSilentAfterDescribe,
  kSilentAfterSetup,
  kSilentAfterPlay,
  kSilentInUnit,
  kCloseAfterConnect,
  kCloseAfterDescribe,
  kCloseAfterSetup,
  kCloseAfterPlay,
  kCloseInUnit,
  kGarbage,
  kNotRtsp,
  kNotHttp,
  kDrip,
  kHugeLength,
  kEndlessBody,
  kEndlessHeader,
  kStaleNonce,
  kAlwaysStale,
  kCloseWith401,
  kHangUpWith401,
  kHangUpBehind401,
  kHangUpOnLogin,
  kResetOnLogin,
  kLoginAtPlay,
  kLockOut,
  kStatus,
  kOptionsFirst,
  kUdpAnswer,
  kUdpSilent,
  kUdpFirewall,
  kUdpDisorder,
  kUdpOtherHost,
  kUdpOtherPort,
  kUdpVague,
  kUdpMulticast,
  kGetSilent,
  kBadSdp,
  kSdpBlanks,
  kSdpLowerCase,
  kSdpTcpProfile,
  kSdpMetadataFirst,
  kSdpNoVersion,
  kSdpHevc,
  kSdpEncrypted,
  kSdpEncryptedFeedback,
  kSdpVp8,
  kSdpH263,
  kSdpMp2t,
  kSdpNoRtpmap,
  kNoCseq,
  kControlAbsolute,
  kControlNoSlash,
  kControlNoBase,
  kControlBreaksLine,
  kOtherChannels,
  kRtpBeforePlay,
  kStrayBytes,
  kStrayFrames,
  kRequestInStream,
  kParameterSetsBetweenSlices,
  kParameterSetsAlone,
  kMarkerOnEveryUnit,
  kTimestampPerSlice,
  kNoMarker,
  kLostPacket,
  kDamagedKeyFrame,
  kSessionTimeout,
  kRedirectRtsp,
  kHalfJpeg,
  kHalfJpegWithEnd,
  kNoEndMarker,
  kNoContentType,
  kOtherBoundary,
  kNoFirstBoundary,
  kRawJpegs,
  kPartLengthZero,
  kPartLengthShort,
  kPartLengthLong,
  kBlankLineFirst,
  kLongPartHeaders,
  kIcyStatus,
  kWantsUserAgent,
  kHtmlPage,
  kEmptyBody,
  kRedirectSame,
  kRedirectOther,
  kRedirectLoop,
};

/// A fault as configured. For kStatus, `method` ("DESCRIBE", "SETUP", "PLAY"; "TCP" for a SETUP that asks for it,
/// "HTTP" for pictures, "GET" for all of HTTP) is answered with `status`.
struct FaultConfig {
  Fault fault = Fault::kNone;
  std::string method;
  int status = 0;
};

/// Reads a name such as "lostPacket", "setup453" or "http503"; nothing for an unknown one.
std::optional<FaultConfig> FaultFromName(std::string_view name);

/// True for a fault that only concerns HTTP, so that RTSP works as usual.
bool OnlyHttp(const FaultConfig& fault);

/// True for a fault of a camera that sends over UDP alone.
bool SendsOverUdp(const FaultConfig& fault);

/// One line for each name, for --help.
std::string FaultHelp();

}  // namespace simcam
