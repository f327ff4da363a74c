#pragma once

#include <json/json.h>

#include <string>
#include <vector>

#include "recorder/device/model/model.h"

namespace recorder {

/// A mistake in a model file, and its place there: a JSON pointer (RFC 6901), or line and column.
struct PlacedMistake {
  std::string place;
  std::string text;
};

/// Appends to `mistakes` what a schema cannot say against `model`, which `json` describes at `place` of its file.
void CheckModel(const Json::Value& json, const Model& model, const std::string& place,
                std::vector<PlacedMistake>& mistakes);

}  // namespace recorder
