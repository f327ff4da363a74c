#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "recorder/http/own_route.h"
#include "recorder/own/handlers.h"

namespace recorder {

/// Workers of two pools answer, so that silent cameras keep nobody from what is only read.
enum class Pool {
  kCameras,  ///< whatever waits for cameras
  kLists,
};

/// One address; rows of the same path have the same pool.
struct OwnRoute {
  std::string_view verb;
  std::string_view path;  ///< behind kOwnPrefix; ends with '/' when a name follows
  Need need;              ///< kUser or kAdmin: the web server lets nobody else ask
  Pool pool;
  OwnAnswer (*handler)(const OwnRequest& request, LineAnswer& lines);
};

/// All addresses that workers answer below /recorder/1/.
std::span<const OwnRoute> OwnRoutes();

/// The paths of those that the workers of lists answer.
std::vector<std::string_view> OwnListPaths();

}  // namespace recorder
