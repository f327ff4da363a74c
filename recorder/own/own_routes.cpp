#include "recorder/own/own_routes.h"

#include <algorithm>

namespace recorder {

namespace {

constexpr OwnRoute kRoutes[] = {
    {"POST", "discover", Need::kAdmin, Pool::kCameras, Keep::kNothing, &DiscoverDevices},
    {"POST", "find", Need::kAdmin, Pool::kCameras, Keep::kNothing, &FindStreams},
    {"GET", "models", Need::kUser, Pool::kLists, Keep::kUntilAsked, &ListModels},
    {"GET", "models/", Need::kUser, Pool::kLists, Keep::kUntilAsked, &ShowModel},
    {"GET", "cameras", Need::kUser, Pool::kLists, Keep::kNothing, &ListCameras},
    {"POST", "cameras", Need::kAdmin, Pool::kLists, Keep::kNothing, &AddCamera},
    {"GET", "cameras/*", Need::kUser, Pool::kLists, Keep::kNothing, &ShowCamera},
    {"PATCH", "cameras/*", Need::kAdmin, Pool::kLists, Keep::kNothing, &ChangeCamera},
    {"DELETE", "cameras/*", Need::kAdmin, Pool::kLists, Keep::kNothing, &RemoveCamera},
    {"POST", "cameras/*/restore", Need::kAdmin, Pool::kLists, Keep::kNothing, &RestoreCamera},
    {"GET", "cameras/*/model", Need::kUser, Pool::kLists, Keep::kNothing, &ExportCamera},
    {"POST", "cameras/*/test", Need::kUser, Pool::kCameras, Keep::kNothing, &TestCamera},
    {"GET", "cameras/*/picture", Need::kUser, Pool::kCameras, Keep::kNothing, &TakePicture},
    {"POST", "cameras/*/measure", Need::kAdmin, Pool::kCameras, Keep::kNothing, &MeasureCamera},
    {"GET", "runs", Need::kAdmin, Pool::kLists, Keep::kNothing, &ListRuns},
    {"POST", "runs", Need::kAdmin, Pool::kLists, Keep::kNothing, &OpenRun},
    {"GET", "runs/*", Need::kAdmin, Pool::kLists, Keep::kNothing, &ShowRun},
    {"DELETE", "runs/*", Need::kAdmin, Pool::kLists, Keep::kNothing, &CancelRun},
    {"POST", "runs/*/rows", Need::kAdmin, Pool::kLists, Keep::kNothing, &AddRows},
    {"GET", "runs/*/rows", Need::kAdmin, Pool::kLists, Keep::kNothing, &ListRows},
    {"POST", "runs/*/start", Need::kAdmin, Pool::kLists, Keep::kNothing, &StartRun},
    {"GET", "events", Need::kUser, Pool::kLists, Keep::kNothing, &ListEvents},
    {"GET", "webhook", Need::kAdmin, Pool::kLists, Keep::kNothing, &ShowWebhook},
    {"PUT", "webhook", Need::kAdmin, Pool::kLists, Keep::kNothing, &SetWebhook},
    {"DELETE", "webhook", Need::kAdmin, Pool::kLists, Keep::kNothing, &RemoveWebhook},
    {"POST", "webhook/test", Need::kAdmin, Pool::kCameras, Keep::kNothing, &TestWebhook},
    {"POST", "measure", Need::kAdmin, Pool::kCameras, Keep::kNothing, &MeasureStream},
};

/// Each once.
template <class Condition>
std::vector<std::string_view> PathsWhere(Condition isMet) {
  std::vector<std::string_view> paths;
  for (const OwnRoute& route : kRoutes) {
    const bool isNew = std::ranges::find(paths, route.path) == paths.end();
    if (isNew && isMet(route)) paths.push_back(route.path);
  }
  return paths;
}

}  // namespace

std::span<const OwnRoute> OwnRoutes() { return kRoutes; }

std::vector<std::string_view> OwnListPaths() {
  return PathsWhere([](const OwnRoute& route) { return route.pool == Pool::kLists; });
}

std::vector<std::string_view> OwnKeptPaths() {
  return PathsWhere([](const OwnRoute& route) { return route.keep == Keep::kUntilAsked; });
}

}  // namespace recorder
