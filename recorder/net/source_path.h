#pragma once

#include <string>

#include "recorder/net/camera_address.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// Takes a whole address apart that a user gave as the path of a stream, such as "rtsp://camera:8554/live": `path`
/// becomes its path, and the port of `address` the one that it names; user and password in it are left out. Other paths
/// stay as they are. Pure.
/// kForeignPath: it names another host than `address`, or neither RTSP nor HTTP, or cannot be read. kTlsStream: its
/// scheme is rtsps.
Outcome TakeApart(std::string& path, CameraAddress& address);

/// True for a whole address with a user in it.
bool HoldsLogin(const std::string& path);

}  // namespace recorder
