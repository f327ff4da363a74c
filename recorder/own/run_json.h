#pragma once

#include <json/value.h>

#include "recorder/records/runs.h"

namespace recorder {

/// A run and how far it has come. `hasTester`: recorder-watch runs.
Json::Value RunJson(const Run& run, bool hasTester);

/// A row of a run as far as it has come, without its password.
Json::Value RowJson(const RunResult& row);

}  // namespace recorder
