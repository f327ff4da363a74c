#include "recorder/notice/event_json.h"

#include <string>

namespace recorder {

Json::Value EventJson(const CameraEvent& event) {
  Json::Value json(Json::objectValue);
  json["id"] = Json::Int64(event.id);
  json["camera"] = event.cameraId;
  json["at"] = Json::Int64(event.at);
  json["cause"] = std::string(NameOf(event.cause));
  json["before"] = event.before ? Json::Value(std::string(NameOf(*event.before))) : Json::Value();
  return json;
}

}  // namespace recorder
