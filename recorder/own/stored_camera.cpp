#include "recorder/own/stored_camera.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "recorder/utility/outcome.h"
#include "recorder/utility/text.h"

namespace recorder {

HttpError NoSuchCamera() { return {404, "there is no such camera"}; }

int IdOf(const OwnRequest& request) {
  const auto id = ParseNumber<int>(request.name);
  if (!id) throw NoSuchCamera();
  return *id;
}

CameraRecord FindCamera(const Records& records, const OwnRequest& request) {
  const auto camera = records.Find(IdOf(request));
  if (!camera) throw NoSuchCamera();
  return *camera;
}

CameraRecord FindEnabled(const Records& records, const OwnRequest& request) {
  CameraRecord camera = FindCamera(records, request);
  if (camera.status != CAM_CONN_STATUS_DISABLED) return camera;
  throw HttpError(409, "the camera is switched off").With("cause", std::string(NameOf(Outcome::kDisabled)));
}

std::optional<CameraRecord> FindStreamRecord(const Records& records, const CameraRecord& camera,
                                             const std::string& stream) {
  if (stream.empty() || stream == kOwnStream) return camera;
  const std::vector<CameraStream> streams = records.Streams(camera.id);
  const auto found = std::ranges::find(streams, stream, &CameraStream::name);
  return found == streams.end() ? std::nullopt : std::optional(RecordOfStream(*found, camera));
}

CameraRecord StreamRecord(const Records& records, const CameraRecord& camera, const std::string& stream) {
  auto record = FindStreamRecord(records, camera, stream);
  if (!record) throw HttpError(404, "the camera has no such stream");
  return std::move(*record);
}

}  // namespace recorder
