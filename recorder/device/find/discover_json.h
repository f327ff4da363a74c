#pragma once

#include <json/value.h>

#include <vector>

#include "recorder/device/find/discover.h"

namespace recorder {

// What a search found, as programs get it. Pure; any thread.

Json::Value DeviceJson(const find::FoundDevice& device, const find::StoredMatch& stored);
Json::Value NetworksJson(const std::vector<SearchedNetwork>& networks);

}  // namespace recorder
