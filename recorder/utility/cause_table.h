#pragma once

#include <array>
#include <optional>
#include <span>
#include <string_view>

#include "platform/device.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// Which later questions get this failure as their answer, without asking the camera.
enum class Reach {
  kContact,       ///< none
  kConversation,  ///< whatever else was to be asked of that camera in the same conversation
  kRequest,       ///< that, and later contacts of the same request with the same host and user
};

/// All that follows from an outcome where it is told or translated. What people read about it stands in docs/causes.md.
struct CauseRow {
  Outcome outcome;
  std::string_view name;          ///< by which callers are told
  std::string_view phrase;        ///< for log lines
  CAMERA_VERIFY_RESULT result;    ///< of a test of the camera
  CAMCAP_FILE_RESULT fileResult;  ///< of asking the camera what it can do
  Reach reach;
  std::array<int, 3> httpStatuses = {};  ///< that mean it (RFC 9110 section 15); 0: no further one
  std::array<int, 3> rtspStatuses = {};  ///< that mean it (RFC 2326 section 7.1.1); 0: no further one
};

/// The rows of all outcomes, in the order of the enumeration.
std::span<const CauseRow> Causes();

/// The row of `outcome`; that of kNotUnderstood for a number that is no outcome.
const CauseRow& RowOf(Outcome outcome);

/// The outcome of that name; nothing for a name of none.
std::optional<Outcome> OutcomeNamed(std::string_view name);

/// Whether the camera may have counted a refused login, after which it may lock the user out.
bool MayBeRefusedLogin(std::optional<Outcome> outcome);

/// What a status of HTTP means where nothing but 200 is a success.
Outcome OutcomeOfHttp(long status);

/// What a status of RTSP means that is no success.
Outcome OutcomeOfRtsp(int status);

}  // namespace recorder
