#pragma once

#include <json/value.h>

#include <vector>

#include "recorder/records/runs.h"

namespace recorder {

/// Rows of one request.
inline constexpr unsigned kMostRowsAtOnce = 1000;
/// Mistakes of rows that are told at once: who has more mends those first.
inline constexpr unsigned kMostRowMistakes = 100;

/// The rows that a client has sent, added to `rows`, whose passwords the caller wipes. Throws HttpError: 400, where
/// rows have mistakes with {"rows": [{"line": 3, "member": "port", "message": ...}]}. Lines count from 1.
void ReadRows(const Json::Value& list, std::vector<RunRow>& rows);

}  // namespace recorder
