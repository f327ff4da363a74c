#pragma once

#include <json/value.h>

#include <string>

#include "recorder/device/model/model_files.h"

namespace recorder {

/// A model in a list: whose it is, how many of its facts are said by whom, and the names of its streams.
Json::Value ModelEntry(const Model& model, ModelOrigin origin);

/// All that a model's file says of it, fact by fact, and who says so; and its streams as the camera is asked for them
/// where a user typed `channel`. With a `host`, each stream has its whole address there as well. Throws
/// std::system_error that names the model's file, when that has just gone.
Json::Value ModelDocument(const FoundModel& found, const std::string& channel, const std::string& host);

}  // namespace recorder
