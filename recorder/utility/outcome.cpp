#include "recorder/utility/outcome.h"

namespace recorder {
namespace {

struct Words {
  std::string_view name;
  std::string_view phrase;
};

Words WordsOf(Outcome outcome) {
  switch (outcome) {
    case Outcome::kOk:
      return {"ok", "no failure"};
    case Outcome::kUnreachable:
      return {"unreachable", "not reachable"};
    case Outcome::kBlocked:
      return {"blocked", "address not allowed by this recorder's policy"};
    case Outcome::kTimedOut:
      return {"timedOut", "timed out"};
    case Outcome::kLoginRefused:
      return {"loginRefused", "login refused"};
    case Outcome::kClockUnknown:
      return {"clockUnknown", "login refused, and the camera does not tell the time that the login depends on"};
    case Outcome::kLoginUnsupported:
      return {"loginUnsupported", "login method not supported"};
    case Outcome::kNoSuchStream:
      return {"noSuchStream", "no such stream"};
    case Outcome::kNoVideo:
      return {"noVideo", "no wanted video"};
    case Outcome::kBusy:
      return {"busy", "camera busy"};
    case Outcome::kNotThisProtocol:
      return {"notThisProtocol", "another protocol is spoken there"};
    case Outcome::kNoService:
      return {"noService", "no such service at this port"};
    case Outcome::kNotUnderstood:
      return {"notUnderstood", "answer not understood"};
    case Outcome::kUnknownModel:
      return {"unknownModel", "no model file knows it"};
    case Outcome::kNoPath:
      return {"noPath", "the path of its stream is missing"};
    case Outcome::kDisabled:
      return {"disabled", "camera switched off on this recorder"};
    case Outcome::kBadRow:
      return {"badRow", "row not readable"};
    case Outcome::kRecorderFailed:
      return {"recorderFailed", "the recorder failed"};
  }
  return {"unknown", "unknown outcome"};
}

}  // namespace

std::string_view NameOf(Outcome outcome) { return WordsOf(outcome).name; }

std::string_view Describe(Outcome outcome) { return WordsOf(outcome).phrase; }

}  // namespace recorder
