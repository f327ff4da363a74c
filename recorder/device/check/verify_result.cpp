#include "recorder/device/check/verify_result.h"

#include <utility>

#include "recorder/utility/translate.h"

namespace recorder {
namespace {

constexpr std::pair<Outcome, CAMERA_VERIFY_RESULT> kResults[] = {
    {Outcome::kOk, CAMERA_VERIFY_PASSED},
    {Outcome::kUnreachable, CAMERA_VERIFY_UNREACHABLE},
    {Outcome::kBlocked, CAMERA_VERIFY_NOT_UNDERSTOOD},  // "unreachable" would send users to the camera's network
    {Outcome::kTimedOut, CAMERA_VERIFY_TIMED_OUT},
    {Outcome::kLoginRefused, CAMERA_VERIFY_LOGIN_REFUSED},
    {Outcome::kClockUnknown, CAMERA_VERIFY_NOT_UNDERSTOOD},      // the password may be right
    {Outcome::kLoginUnsupported, CAMERA_VERIFY_NOT_UNDERSTOOD},  // another password would not help
    {Outcome::kNoSuchStream, CAMERA_VERIFY_NO_SUCH_STREAM},
    {Outcome::kNoVideo, CAMERA_VERIFY_NO_VIDEO},
    {Outcome::kBusy, CAMERA_VERIFY_BUSY},
    {Outcome::kNotThisProtocol, CAMERA_VERIFY_NOT_UNDERSTOOD},
    {Outcome::kNoService, CAMERA_VERIFY_NOT_UNDERSTOOD},  // "no such stream" would send users to the path
    {Outcome::kNotUnderstood, CAMERA_VERIFY_NOT_UNDERSTOOD},
    {Outcome::kUnknownModel, CAMERA_VERIFY_NOT_PREPARED},
    {Outcome::kNoPath, CAMERA_VERIFY_NOT_PREPARED},
    {Outcome::kDisabled, CAMERA_VERIFY_NOT_PREPARED},
    {Outcome::kBadRow, CAMERA_VERIFY_NOT_PREPARED},
    {Outcome::kRecorderFailed, CAMERA_VERIFY_NOT_PREPARED},
};

}  // namespace

CAMERA_VERIFY_RESULT ToVerifyResult(Outcome outcome) {
  return Translate(kResults, outcome, CAMERA_VERIFY_NOT_UNDERSTOOD);
}

}  // namespace recorder
