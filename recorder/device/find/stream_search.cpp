#include "recorder/device/find/stream_search.h"

#include <algorithm>
#include <array>

#include "recorder/utility/cause_table.h"

namespace recorder::find {

StreamSearch::StreamSearch(const FindRequest& wanted) : request(wanted), end(begin + kLongestFind) {
  scope.CountIn(budget);
  end = std::min(end, scope.Deadline());
}

bool StreamSearch::IsLoginTaken() const {
  return result.login == FindLogin::kAccepted || result.login == FindLogin::kOnvifOthers;
}

CameraAddress StreamSearch::CameraAt(const FoundPort& port) const {
  return {request.host, port.number, request.user, request.password, port.isTls};
}

PathHunt& StreamSearch::HuntAt(const FoundPort& port) {
  const bool isKnown = hunt && hunt->Camera().port == port.number;
  if (!isKnown) hunt = std::make_unique<PathHunt>(CameraAt(port));
  return *hunt;
}

void StreamSearch::Warn(FindWarning warning) {
  const bool isNew = std::ranges::find(result.warnings, warning) == result.warnings.end();
  if (isNew) result.warnings.push_back(warning);
}

bool StreamSearch::IsRefusal(Outcome outcome) const {
  if (!HasLogin() || (outcome == Outcome::kTimedOut && budget.Left() == 0)) return false;
  constexpr std::array kYes = {Outcome::kOk, Outcome::kNoSuchStream, Outcome::kNoVideo, Outcome::kEncryptedStream};
  const bool isYes = std::ranges::find(kYes, outcome) != kYes.end();
  return MayBeRefusedLogin(outcome) || (scope.HasSentLogin() && !scope.IsLoginTaken() && !IsLoginTaken() && !isYes);
}

void StreamSearch::TakeLogin() {
  if (scope.HasSentLogin() && result.login == FindLogin::kNotTried) result.login = FindLogin::kAccepted;
}

/// A login that was taken elsewhere is right there, unless it is refused where 404 seemed to take it.
bool StreamSearch::EndWith(Outcome outcome) {
  const bool isRefusal = IsRefusal(outcome);
  const bool isDoubted = hunt && hunt->Camera().port == loginPort;
  if (isRefusal && IsLoginTaken() && !isDoubted) return false;
  if (isRefusal) EndRefused();
  result.outcome = outcome;
  return false;
}

void StreamSearch::EndRefused() {
  result.login = FindLogin::kRefused;
  std::erase(result.warnings, FindWarning::kOnvifOthers);
}

}  // namespace recorder::find
