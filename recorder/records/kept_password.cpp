#include <algorithm>
#include <tuple>
#include <vector>

#include "recorder/records/camera_record.h"
#include "recorder/records/records.h"

namespace recorder {

CameraRecord RecordOfStream(const CameraStream& stream, CameraRecord camera) {
  camera.vendor = stream.vendor;
  camera.model = stream.model;
  camera.port = stream.port;
  camera.channel = stream.channel;
  camera.sourcePath = stream.sourcePath;
  return camera;
}

bool KeepsPassword(const CameraRecord& before, const CameraRecord& after) {
  const auto login = [](const CameraRecord& camera) {
    return std::tie(camera.host, camera.port, camera.vendor, camera.model, camera.user, camera.sourcePath);
  };
  return login(before) == login(after);
}

bool KeepsPassword(const std::vector<CameraStream>& before, const std::vector<CameraStream>& after) {
  const auto isAsked = [&](const CameraStream& stream) {
    return stream.name == kOwnStream || std::ranges::any_of(before, [&](const CameraStream& other) {
             return KeepsPassword(RecordOfStream(other, {}), RecordOfStream(stream, {}));
           });
  };
  return std::ranges::all_of(after, isAsked);
}

bool KeepsPassword(const CameraRecord& before, const std::vector<CameraStream>& streams, const CameraRecord& after,
                   const CameraChange& change) {
  return KeepsPassword(before, after) && (!change.streams || KeepsPassword(streams, *change.streams));
}

}  // namespace recorder
