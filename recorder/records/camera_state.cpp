#include "recorder/records/camera_state.h"

#include <algorithm>

#include "recorder/records/attempts.h"
#include "recorder/utility/watch_clock.h"

namespace recorder {
namespace {

constexpr std::int64_t kDay = 86'400;

void Add(const Attempt& attempt, CameraState& state) {
  if (attempt.answered == 0) return;
  state.time = attempt.time;
  const bool hasWorked = state.outcome.lastSuccess != 0;  // else the attempt was at a record that was edited since
  if (hasWorked) state.outcome.lastSuccess = std::max(state.outcome.lastSuccess, attempt.lastSuccess);
}

}  // namespace

std::map<int, CameraState> ReadStates(const Records& records, const std::filesystem::path& stateFolder) {
  const auto flips = records.Flips(WatchClock::Seconds() - kDay);
  const auto attempts = Attempts::Read(stateFolder);
  std::map<int, CameraState> states;
  for (const auto& [id, outcome] : records.Outcomes()) {
    CameraState& state = states[id];
    state.outcome = outcome;
    if (const auto count = flips.find(id); count != flips.end()) state.flips = count->second;
    if (const auto attempt = attempts.find(id); attempt != attempts.end()) Add(attempt->second, state);
  }
  return states;
}

std::optional<CameraState> ReadState(const Records& records, const std::filesystem::path& stateFolder, int id) {
  const auto outcome = records.OutcomeOf(id);
  if (!outcome) return std::nullopt;
  CameraState state{.outcome = *outcome};
  for (const auto& [camera, count] : records.Flips(WatchClock::Seconds() - kDay, id)) state.flips = count;
  if (const auto attempt = Attempts::Of(stateFolder, id)) Add(*attempt, state);
  return state;
}

}  // namespace recorder
