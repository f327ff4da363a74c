#pragma once

#include <chrono>
#include <optional>
#include <vector>

#include "recorder/device/asked/onvif/answers.h"
#include "recorder/device/find/find.h"
#include "recorder/net/camera_address.h"
#include "recorder/request/request_budget.h"
#include "recorder/utility/outcome.h"

namespace recorder::find {

/// What a camera says over ONVIF.
struct OnvifFindings {
  Outcome outcome = Outcome::kNoService;  ///< kOk: it named streams
  bool isLoggedIn = false;                ///< it took the login
  bool isLoginRefused = false;            ///< it did not, or did not clearly say so; nobody asks again in this scope
  bool isOnvif = false;                   ///< something that speaks SOAP answered
  bool isWhole = true;                    ///< false: streams were left out, since nothing more may be asked
  onvif::DeviceFacts device;
  std::vector<ListedStream> streams;
  std::optional<ListedSnapshot> snapshot;
  std::optional<std::chrono::seconds> clockOffset;  ///< the camera's clock less ours
};

/// Asks the camera at `camera`'s port for its profiles and their addresses, with its login where it wants one: of many
/// channels for a few addresses only, if the others can be worked out. `clockOffset`: nothing when the clock was not
/// told. Within the thread's RequestScope, whose budget is `budget`; a refused login is one attempt.
OnvifFindings AskOnvif(const CameraAddress& camera, std::optional<std::chrono::seconds> clockOffset,
                       const RequestBudget& budget);

}  // namespace recorder::find
