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

/// What a browser does with an answer.
enum class Keep {
  kNothing,
  kUntilAsked,  ///< keeps it, and asks each time whether it still holds: only what is about nobody and no camera
};

/// One address; rows of the same path have the same pool.
struct OwnRoute {
  std::string_view verb;
  std::string_view path;  ///< as NameIn has it
  Need need;              ///< kUser or kAdmin: the web server lets nobody else ask
  Pool pool;
  Keep keep;  ///< the same in rows of the same path, like the pool
  OwnAnswer (*handler)(const OwnRequest& request, OwnTools& tools);
};

/// All addresses that workers answer below /recorder/1/.
std::span<const OwnRoute> OwnRoutes();

/// The paths of those that the workers of lists answer.
std::vector<std::string_view> OwnListPaths();

/// The paths of those whose answers a browser may keep.
std::vector<std::string_view> OwnKeptPaths();

}  // namespace recorder
