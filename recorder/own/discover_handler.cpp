#include <stdexcept>

#include "recorder/device/find/discover.h"
#include "recorder/device/find/discover_json.h"
#include "recorder/own/handlers.h"
#include "recorder/records/records.h"
#include "recorder/utility/config.h"

namespace recorder {

namespace {

DiscoverRequest ReadDiscoverRequest(const OwnRequest& request) {
  DiscoverRequest wanted;
  wanted.range = TextOf(request, "range");
  const Json::Value& seconds = request.params["seconds"];
  if (seconds.isNull()) return wanted;
  const int most = static_cast<int>(kLongestDiscovery.count());
  const bool isRight = seconds.isInt() && seconds.asInt() >= 1 && seconds.asInt() <= most;
  if (!isRight) throw HttpError(400, "seconds must be a whole number from 1 to " + std::to_string(most));
  wanted.duration = std::chrono::seconds(seconds.asInt());
  return wanted;
}

}  // namespace

OwnAnswer DiscoverDevices(const OwnRequest& request, LineAnswer& lines) try {
  Records records(GetConfig().stateFolder);
  const auto networks = Discover(
      ReadDiscoverRequest(request), &records,
      [&](const find::FoundDevice& device, const auto& stored) { return lines.Tell(DeviceJson(device, stored)); });
  Json::Value data(Json::objectValue);
  data["networks"] = NetworksJson(networks);
  return Success(std::move(data));
} catch (const DiscoverRefused& refusal) {
  throw HttpError(400, refusal.what());
}

}  // namespace recorder
