#pragma once

#include <string_view>

namespace recorder {

/// How a request about a camera ended: the rung of the ladder on which it failed. What follows from each stands in
/// cause_table.cpp.
enum class Outcome {
  kOk,
  kUnreachable,         ///< host not found, no route, connection refused
  kBlocked,             ///< nothing was sent: the recorder's policy does not let callers have that address contacted
  kTimedOut,            ///< connected or not, no answer before the deadline
  kLoginRefused,        ///< user or password refused
  kClockUnknown,        ///< login refused, but the camera's clock, which the login depends on, could not be read
  kLoginUnsupported,    ///< the camera asks for a login method that the recorder does not know
  kCertificateChanged,  ///< nothing was sent: a TLS certificate is not the one that is pinned for the stored camera
  kNoSuchStream,        ///< the path or stream does not exist there
  kNoVideo,             ///< no video, or not in the wanted codec or stream type
  kEncryptedStream,     ///< the camera sends its video only encrypted (SRTP)
  kTransportRefused,    ///< the camera does not send its video over the RTSP connection, nor over UDP
  kBusy,                ///< too many sessions, service unavailable
  kNotThisProtocol,     ///< what answers there speaks another protocol
  kNoService,           ///< what answers there does not have the service (ONVIF, PSIA) that the camera is asked by
  kNotUnderstood,       ///< the answer makes no sense, ended early, is too long, or is no picture
  // Nothing was sent:
  kUnknownModel,  ///< no model file knows vendor and model
  kNoPath,        ///< the model needs the stream's path, and the request has none
  kForeignPath,   ///< the stream's path is a whole address, of another host or protocol
  kDisabled,      ///< the stored camera is switched off
  kBadRow,        ///< the row of a list cannot be read
  // Here, not at the camera:
  kDecoderFailed,   ///< the media process ended over what the camera sent, took too long or lacked memory
  kRecorderFailed,  ///< no memory, or the state folder cannot be written
  kCount            ///< none, but how many there are
};

/// The name by which callers are told, such as "loginRefused"; docs/causes.md has a text for each.
std::string_view NameOf(Outcome outcome);

/// A short phrase for log lines, such as "login refused".
std::string_view Describe(Outcome outcome);

}  // namespace recorder
