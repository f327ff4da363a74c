#include "recorder/own/camera_failure.h"

#include <string>

namespace recorder {

OwnAnswer CameraFailure(Outcome outcome) {
  constexpr int kBadGateway = 502;
  Json::Value json = Failure(kBadGateway, std::string(Describe(outcome)));
  json["error"]["cause"] = std::string(NameOf(outcome));
  return {kBadGateway, json};
}

}  // namespace recorder
