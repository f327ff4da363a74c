#include "recorder/records/camera_places.h"

#include <algorithm>

#include "recorder/utility/text.h"

namespace recorder {

namespace {

auto KeyOf(const CameraRecord& camera) {
  return std::tuple(NormalizedHost(camera.host), camera.port, camera.channel, camera.sourcePath);
}

}  // namespace

bool IsSamePlace(const CameraRecord& one, const CameraRecord& other) { return KeyOf(one) == KeyOf(other); }

std::optional<CameraRecord> FindSamePlace(const CameraRecord& camera, const std::vector<CameraRecord>& stored) {
  const auto other = std::ranges::find_if(
      stored, [&](const CameraRecord& one) { return one.id != camera.id && IsSamePlace(one, camera); });
  return other == stored.end() ? std::nullopt : std::optional(*other);
}

CameraPlaces::CameraPlaces(const std::vector<CameraRecord>& stored) {
  for (const CameraRecord& camera : stored) {
    Add(camera, "camera " + std::to_string(camera.id) + " (" + camera.name + ")");
  }
}

std::string CameraPlaces::Find(const CameraRecord& camera) const {
  const auto found = places_.find(KeyOf(camera));
  return found == places_.end() ? "" : found->second;
}

void CameraPlaces::Add(const CameraRecord& camera, const std::string& place) { places_.emplace(KeyOf(camera), place); }

}  // namespace recorder
