#pragma once

#include <optional>
#include <string_view>

#include "recorder/device/model/model.h"

namespace recorder::onvif {

/// Where the picture at the address `text` is for us: the host is the one that the user typed, and so is the port where
/// the address names `servicePort`, as the camera's services do. Nothing when it is no HTTP address or "".
std::optional<ModelPath> SnapshotPath(std::string_view text, int servicePort);

}  // namespace recorder::onvif
