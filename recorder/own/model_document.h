#pragma once

#include <json/value.h>

#include <optional>
#include <string>
#include <vector>

#include "recorder/device/model/model_files.h"
#include "recorder/device/model/nearest_models.h"

namespace recorder {

/// The models of `models` that are most like `wanted`, vendor and model as PlainName gives them.
Json::Value NearestJson(const std::vector<ModelName>& models, const std::string& wanted);

/// A model in a list: whose it is, how many of its facts are said by whom, and the names of its streams.
Json::Value ModelEntry(const Model& model, ModelOrigin origin);

/// The camera whose streams are told.
struct AskedCamera {
  std::string channel;      ///< as a user typed it; "" for the default one
  std::string host;         ///< "": no stream has a whole address
  std::optional<int> port;  ///< where the model names none; the scheme's own one when missing
};

/// The whole address at which that camera has a stream of its model, without a login.
std::string StreamAddress(const Model& model, const ModelStream& stream, const AskedCamera& camera);

/// All that a model's file says of it, fact by fact, and who says so; and its streams as
/// that camera is asked for them. Throws std::system_error that names the model's file, when that has just gone.
/// One thread.
Json::Value ModelDocument(const FoundModel& found, const AskedCamera& camera);

}  // namespace recorder
