#include "recorder/watch/flapping.h"

#include <algorithm>

namespace recorder {
namespace {

constexpr std::size_t kMostChanges = 4;

}  // namespace

std::optional<Notice> Flapping::TakeSteady(std::int64_t now) {
  Camera* steady = nullptr;
  for (auto& [id, camera] : cameras_) {
    const bool isSteady = camera.isFlapping && camera.last.at + kTime <= now;
    if (isSteady && (steady == nullptr || camera.last.at < steady->last.at)) steady = &camera;
  }
  if (steady == nullptr) return std::nullopt;
  steady->isFlapping = false;
  return Notice{.kind = Notice::Kind::kSteady, .event = steady->last};
}

std::optional<Notice> Flapping::Take(const CameraEvent& event) {
  Camera& camera = cameras_[event.cameraId];
  std::erase_if(camera.changes, [&](std::int64_t at) { return at <= event.at - kTime; });
  camera.changes.push_back(event.at);
  camera.last = event;
  if (camera.isFlapping) return std::nullopt;
  camera.isFlapping = camera.changes.size() > kMostChanges;
  return Notice{.kind = camera.isFlapping ? Notice::Kind::kFlapping : Notice::Kind::kChange, .event = event};
}

}  // namespace recorder
