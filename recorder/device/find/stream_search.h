#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "recorder/device/find/find.h"
#include "recorder/device/find/path_hunt.h"
#include "recorder/device/find/port_questions.h"
#include "recorder/net/camera_address.h"
#include "recorder/request/request_budget.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/outcome.h"

namespace recorder::find {

/// What the search for the streams of one camera knows so far, which its steps share, and what each answer means for
/// the one login that it may try. It is the calling thread's RequestScope as long as it lives.
struct StreamSearch {
  /// `wanted` must outlive it.
  explicit StreamSearch(const FindRequest& wanted);

  bool HasLogin() const { return !request.user.empty() || !request.password.empty(); }
  bool IsLoginTaken() const;
  CameraAddress CameraAt(const FoundPort& port) const;

  /// What tries paths at that port; for another one than before it begins anew.
  PathHunt& HuntAt(const FoundPort& port);

  void Warn(FindWarning warning);

  /// After a login was sent, whatever is not clearly a yes counts as a no until one was taken.
  bool IsRefusal(Outcome outcome) const;
  /// The camera has taken the login, if one was sent.
  void TakeLogin();
  /// Ends the search with `outcome`, and returns false.
  bool EndWith(Outcome outcome);
  void EndRefused();

  const FindRequest& request;
  const Clock::time_point begin = Clock::now();
  RequestBudget budget{kMostFindRequests};
  RequestScope scope{kLongestFind, RequestScope::OfPart{}};
  Clock::time_point end;
  std::vector<PortAnswer> answers;        ///< of the ports at which something is spoken
  std::vector<std::string> vendors;       ///< likely ones, the likeliest first
  std::vector<std::string> namedVendors;  ///< those of them whose own name was told
  std::unique_ptr<PathHunt> hunt;         ///< of the last path; gone before other ports are asked: connections are few
  int loginPort = 0;                      ///< where the login was tried over RTSP; 0: nowhere
  bool mayLogInOverHttp = true;
  std::optional<Outcome> useless;  ///< why a stream that is there is of no use
  FindResult result;
};

}  // namespace recorder::find
