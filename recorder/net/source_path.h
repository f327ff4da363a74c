#pragma once

#include <string>

#include "recorder/net/camera_address.h"
#include "recorder/utility/outcome.h"

namespace recorder {

// Paths that users give may be whole addresses, such as "rtsps://camera:8554/live". What is inside TLS travels so
// through the module, too, which knows a host, a port and a path.

/// Takes a whole address apart that stands in place of a path: `path` becomes its path, and `address` gets the port
/// that it names, and TLS; user and password in it are left out. Other paths stay as they are. Pure. kForeignPath: it
/// names another host than `address`, or neither RTSP nor HTTP, or cannot be read.
Outcome TakeApart(std::string& path, CameraAddress& address);

/// `path` at `address` as TakeApart takes it: a whole address where that is inside TLS.
std::string PutTogether(const std::string& path, const CameraAddress& address);

}  // namespace recorder
