#include "recorder/device/find/measure.h"
#include "recorder/device/find/measure_json.h"
#include "recorder/own/camera_failure.h"
#include "recorder/own/handlers.h"

namespace recorder {

namespace {

CameraAddress CameraOf(const OwnRequest& request) {
  CameraAddress camera;
  camera.host = TextOf(request, "host");
  if (camera.host.empty()) throw HttpError(400, "host is missing");
  camera.isTls = FlagOf(request, "tls");
  camera.port = NumberOf(request, "port", 1, kLargestPort, camera.isTls ? kRtspsPort : kRtspPort);
  camera.user = TextOf(request, "user");
  camera.password = TextOf(request, "password");
  return camera;
}

}  // namespace

OwnAnswer MeasureStream(const OwnRequest& request, OwnTools& /*tools*/) {
  constexpr int kMost = static_cast<int>(kLongestMeasure.count());
  const std::chrono::seconds longest(NumberOf(request, "seconds", 1, kMost, kMost));
  const MeasureResult result = Measure(CameraOf(request), TextOf(request, "path"), longest, {});
  return result.outcome == Outcome::kOk ? Success(MeasureJson(result)) : CameraFailure(result.outcome);
}

}  // namespace recorder
