#pragma once

#include <optional>
#include <string>

#include "recorder/net/camera_address.h"

namespace recorder {

/// Tells the request which camera it is about to contact, if `address` holds a lent password, which from then on is
/// lent for that camera or for none. GetCamCapFile and DeviceAPIHandler::LoadByParam call it first; what contacts a
/// camera behind them relies on the module to hand on what it gave to them. `sourcePath`: nothing where the work that
/// follows uses none.
void NameWantedCamera(const std::string& vendor, const std::string& model, const CameraAddress& address,
                      const std::optional<std::string>& sourcePath);

}  // namespace recorder
