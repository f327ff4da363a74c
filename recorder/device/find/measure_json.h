#pragma once

#include <json/value.h>

#include <string>

#include "recorder/device/find/measure.h"

namespace recorder {

// What was measured, for clients and people. Pure.

/// Numbers that are not known are null.
Json::Value MeasureJson(const MeasureResult& result);

/// What a warning means here, and what to do.
std::string TextOf(MeasureWarning warning, const find::StreamFigures& figures);

}  // namespace recorder
