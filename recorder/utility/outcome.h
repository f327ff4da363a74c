#pragma once

#include <string_view>

namespace recorder {

/// How asking a camera ended: the rung of the ladder on which it failed.
enum class Outcome {
  kOk,
  kUnreachable,       ///< host not found, no route, connection refused
  kBlocked,           ///< nothing was sent: the recorder's policy does not let callers have that address contacted
  kTimedOut,          ///< connected or not, no answer before the deadline
  kLoginRefused,      ///< user or password refused
  kClockUnknown,      ///< login refused, but the camera's clock, which the login depends on, could not be read
  kLoginUnsupported,  ///< the camera asks for a login method that the recorder does not know
  kNoSuchStream,      ///< the path or stream does not exist there
  kNoVideo,           ///< no video, or not in the wanted codec or stream type
  kBusy,              ///< too many sessions, service unavailable
  kNotThisProtocol,   ///< what answers there speaks another protocol
  kNotUnderstood,     ///< the answer makes no sense, ended early, is too long, or is no picture
};

/// A short phrase for log lines, such as "login refused".
std::string_view Describe(Outcome outcome);

}  // namespace recorder
