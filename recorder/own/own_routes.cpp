#include "recorder/own/own_routes.h"

namespace recorder {

namespace {

constexpr OwnRoute kRoutes[] = {
    {"POST", "discover", Need::kAdmin, Pool::kCameras, &DiscoverDevices},
    {"POST", "find", Need::kAdmin, Pool::kCameras, &FindStreams},
    {"GET", "models", Need::kUser, Pool::kLists, &ListModels},
    {"GET", "models/", Need::kUser, Pool::kLists, &ShowModel},
    {"POST", "measure", Need::kAdmin, Pool::kCameras, &MeasureStream},
};

}  // namespace

std::span<const OwnRoute> OwnRoutes() { return kRoutes; }

std::vector<std::string_view> OwnListPaths() {
  std::vector<std::string_view> paths;
  for (const OwnRoute& route : kRoutes) {
    if (route.pool == Pool::kLists) paths.push_back(route.path);
  }
  return paths;
}

}  // namespace recorder
