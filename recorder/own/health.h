#pragma once

#include <functional>
#include <string>
#include <vector>

#include "recorder/http/json_answer.h"
#include "recorder/utility/config.h"

// Addresses by which programs watch the recorder, outside /recorder/1/.

namespace recorder {

/// True for /healthz, /readyz and /metrics.
bool IsForWatchers(const std::string& path);

/// One condition of being ready.
struct Condition {
  const char* name;
  std::function<std::string()> whyNot;  ///< "" when it is fulfilled, else a reason that strangers may read
};

/// Whether all conditions hold: 200, or 503, with "ok" or its reason for each. A condition that throws does not hold.
OwnAnswer Readiness(const std::vector<Condition>& conditions);

/// Whether records and models can be read, and a worker that waits for cameras is free. A worker answers, so that the
/// module is loaded.
OwnAnswer AnswerReady(const Config& config);

/// That this process answers.
OwnAnswer AnswerAlive();

}  // namespace recorder
