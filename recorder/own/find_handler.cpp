#include <algorithm>

#include "recorder/device/find/find.h"
#include "recorder/device/find/find_json.h"
#include "recorder/net/camera_address.h"
#include "recorder/own/camera_failure.h"
#include "recorder/own/handlers.h"
#include "recorder/utility/secrets.h"

namespace recorder {

namespace {

bool IsPort(const Json::Value& port) { return port.isInt() && port.asInt() >= 1 && port.asInt() <= kLargestPort; }

std::vector<int> PortsOf(const OwnRequest& request) {
  const Json::Value& ports = request.params["ports"];
  const bool isRight = ports.isNull() || (ports.isArray() && ports.size() <= kMostFindPorts &&
                                          std::all_of(ports.begin(), ports.end(), IsPort));
  if (!isRight) throw HttpError(400, "ports must be a list of at most 12 numbers from 1 to 65535");
  std::vector<int> numbers;
  for (const Json::Value& port : ports) numbers.push_back(port.asInt());
  return numbers;
}

FindRequest ReadFindRequest(const OwnRequest& request) {
  FindRequest wanted{TextOf(request, "host"), TextOf(request, "user"), TextOf(request, "password"), PortsOf(request)};
  if (wanted.host.empty()) throw HttpError(400, "host is missing");
  return wanted;
}

}  // namespace

OwnAnswer FindStreams(const OwnRequest& request, OwnTools& tools) {
  FindRequest wanted = ReadFindRequest(request);
  const WipeAtEnd wipe(wanted.password);
  const auto tell = [&](FindStep step, const FindResult& soFar) { return tools.lines.Tell(StepJson(step, soFar)); };
  const FindResult result = Find(wanted, tell);
  if (result.outcome == Outcome::kOk) return Success(FindJson(wanted.host, result));
  OwnAnswer failure = CameraFailure(result.outcome);
  failure.json["data"] = FindJson(wanted.host, result);
  return failure;
}

}  // namespace recorder
