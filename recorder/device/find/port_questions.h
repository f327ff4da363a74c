#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "recorder/device/find/find.h"
#include "recorder/request/request_budget.h"
#include "recorder/utility/outcome.h"

namespace recorder::find {

/// A path that no camera has: whoever says yes to it says yes to all.
inline constexpr char kNoCamerasPath[] = "/no-camera-has-this-path";

/// What came of asking at one port, without a login.
struct PortAnswer {
  FoundPort port;
  Outcome outcome = Outcome::kUnreachable;          ///< kOk: RTSP or HTTP is spoken there; else why neither was found
  Outcome rtsp = Outcome::kNotThisProtocol;         ///< of a DESCRIBE of kNoCamerasPath
  Outcome onvif = Outcome::kNotThisProtocol;        ///< of the question for the camera's clock
  std::optional<std::chrono::seconds> clockOffset;  ///< the camera's clock less ours
  bool asksDigest = false;                          ///< one of its servers asked for a login by Digest
  int requests = 0;                                 ///< that went there, beside those of the budget
};

/// Asks at all ports of `request` side by side, each in a thread with a RequestScope of its own, and waits for all.
/// Nothing goes out but one request a port and what `budget` has for more, nothing lasts longer than `limit`, and no
/// login is sent. One answer a port, ascending.
std::vector<PortAnswer> AskPorts(const FindRequest& request, RequestBudget& budget, std::chrono::milliseconds limit);

/// The outcome of `answers`, at least one, that tells most of the host: a refused connection more than one that is
/// waited for in vain. Pure.
Outcome MostTelling(const std::vector<PortAnswer>& answers);

}  // namespace recorder::find
