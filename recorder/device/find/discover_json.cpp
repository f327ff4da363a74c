#include "recorder/device/find/discover_json.h"

#include <string_view>
#include <utility>

namespace recorder {
namespace {

using namespace find;

const char* NameOf(HeardBy by) {
  switch (by) {
    case HeardBy::kOnvif:
      return "onvif";
    case HeardBy::kMdns:
      return "mdns";
    default:
      return "ports";
  }
}

const char* NameOf(DeviceState state) {
  switch (state) {
    case DeviceState::kKnown:
      return "known";
    case DeviceState::kMoved:
      return "moved";
    default:
      return "new";
  }
}

Json::Value CamerasJson(const std::vector<CameraRecord>& cameras) {
  Json::Value list(Json::arrayValue);
  for (const CameraRecord& camera : cameras) {
    Json::Value& entry = list.append(Json::Value(Json::objectValue));
    entry["camId"] = camera.id;
    entry["name"] = camera.name;
    entry["host"] = camera.host;
  }
  return list;
}

/// A list of what `toJson` makes of each of `values`.
template <class Values, class ToJson>
Json::Value ListOf(const Values& values, const ToJson& toJson) {
  Json::Value list(Json::arrayValue);
  for (const auto& value : values) list.append(toJson(value));
  return list;
}

}  // namespace

Json::Value DeviceJson(const FoundDevice& device, const StoredMatch& stored) {
  const auto asItIs = [](const auto& value) { return Json::Value(value); };
  Json::Value json(Json::objectValue);
  json["device"] = device.number;
  json["addresses"] = ListOf(device.addresses, asItIs);
  json["port"] = device.port == 0 ? Json::Value() : Json::Value(device.port);
  const std::pair<const char*, const std::string&> texts[] = {{"name", device.name},
                                                              {"maker", device.maker},
                                                              {"model", device.model},
                                                              {"endpoint", device.endpoint},
                                                              {"serial", device.serial}};
  for (const auto& [member, text] : texts) json[member] = text;
  json["by"] = ListOf(device.by, [](HeardBy by) { return Json::Value(NameOf(by)); });
  json["openPorts"] = ListOf(device.openPorts, asItIs);
  json["state"] = NameOf(stored.state);
  json["cameras"] = CamerasJson(stored.cameras);
  return json;
}

Json::Value NetworksJson(const std::vector<SearchedNetwork>& networks) {
  return ListOf(networks, [](const SearchedNetwork& network) {
    Json::Value json(Json::objectValue);
    json["network"] = network.network;
    json["interface"] = network.interface;
    return json;
  });
}

}  // namespace recorder
