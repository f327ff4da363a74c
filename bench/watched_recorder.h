#pragma once

#include <memory>

#include "bench/fleet.h"
#include "rig/recorder.h"

// A recorder that watches a fleet of stored cameras, with or without a past.

namespace bench {

struct PastOptions {
  int watchSeconds = 300;
  bool isKnown = false;  ///< as after days of watching: what each came to, silent ones are asked once an hour
  int eventsADay = 0;    ///< that happened within 90 days
};

/// Stores all cameras of `fleet`, the first with id 1, and starts to watch them.
std::unique_ptr<rig::TestRecorder> WatchedRecorder(const Fleet& fleet, const PastOptions& past);

}  // namespace bench
