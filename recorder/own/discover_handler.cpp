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
  const int most = static_cast<int>(kLongestDiscovery.count());
  const int usual = static_cast<int>(kUsualDiscovery.count());
  wanted.duration = std::chrono::seconds(NumberOf(request, "seconds", 1, most, usual));
  return wanted;
}

}  // namespace

OwnAnswer DiscoverDevices(const OwnRequest& request, OwnTools& tools) try {
  Records records(GetConfig().stateFolder);
  const auto networks =
      Discover(ReadDiscoverRequest(request), &records, [&](const find::FoundDevice& device, const auto& stored) {
        return tools.lines.Tell(DeviceJson(device, stored));
      });
  Json::Value data(Json::objectValue);
  data["networks"] = NetworksJson(networks);
  return Success(std::move(data));
} catch (const DiscoverRefused& refusal) {
  throw HttpError(400, refusal.what());
}

}  // namespace recorder
