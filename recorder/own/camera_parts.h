#pragma once

#include <json/value.h>

#include <string>
#include <vector>

#include "recorder/records/records.h"

namespace recorder {

// Lists that belong to a camera, as a client sends them. Throws HttpError 400 that names the member "streams" or
// "facts". What records do not take shows when they are asked.

/// The streams of the camera at `host`: an address is a whole one of that host, without a login.
std::vector<CameraStream> StreamsIn(const Json::Value& list, const std::string& host);

/// What is known of a camera; now, where no time is given.
std::vector<CameraFact> FactsIn(const Json::Value& list);

}  // namespace recorder
