#pragma once

#include <optional>

#include "simcam/fault.h"

namespace simcam {

/// What an RTSP session has reached.
enum class Phase { kConnect, kDescribe, kSetup, kPlay };

struct PhaseFault {
  Phase phase;  ///< reached last
  Fault silent;
  Fault closing;
};
inline constexpr PhaseFault kPhaseFaults[] = {
    {Phase::kDescribe, Fault::kSilentAfterDescribe, Fault::kCloseAfterDescribe},
    {Phase::kSetup, Fault::kSilentAfterSetup, Fault::kCloseAfterSetup},
    {Phase::kPlay, Fault::kSilentAfterPlay, Fault::kCloseAfterPlay}};

/// The phase after which a fault makes a camera silent, or leave.
inline std::optional<Phase> PhaseOf(Fault fault, Fault PhaseFault::*column) {
  for (const PhaseFault& row : kPhaseFaults) {
    if (row.*column == fault) return row.phase;
  }
  return std::nullopt;
}

}  // namespace simcam
