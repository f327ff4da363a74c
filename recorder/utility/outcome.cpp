#include "recorder/utility/outcome.h"

namespace recorder {

std::string_view Describe(Outcome outcome) {
  switch (outcome) {
    case Outcome::kOk:
      return "no failure";
    case Outcome::kUnreachable:
      return "not reachable";
    case Outcome::kBlocked:
      return "address not allowed by this recorder's policy";
    case Outcome::kTimedOut:
      return "timed out";
    case Outcome::kLoginRefused:
      return "login refused";
    case Outcome::kClockUnknown:
      return "login refused, and the camera does not tell the time that the login depends on";
    case Outcome::kLoginUnsupported:
      return "login method not supported";
    case Outcome::kNoSuchStream:
      return "no such stream";
    case Outcome::kNoVideo:
      return "no wanted video";
    case Outcome::kBusy:
      return "camera busy";
    case Outcome::kNotThisProtocol:
      return "another protocol is spoken there";
    case Outcome::kNotUnderstood:
      return "answer not understood";
  }
  return "unknown outcome";
}

}  // namespace recorder
