#pragma once

#include <memory>
#include <string>
#include <vector>

#include "recorder/device/model/model.h"

// Vendors that no model file describes: "User", and the generic protocols, whose cameras are asked what they can do.

namespace recorder {

inline constexpr char kOnvifVendor[] = "ONVIF";
inline constexpr char kPsiaVendor[] = "PSIA";
inline constexpr char kGenericName[] = "Generic";  ///< of the one model of a generic protocol

/// The only model of a built-in vendor; null for any other. Of a generic protocol it holds what is true of every camera
/// before it was asked: channel "1", any codec, no path.
std::shared_ptr<const Model> BuiltInModel(const std::string& vendor);

/// All of them.
const std::vector<std::shared_ptr<const Model>>& BuiltInModels();

/// True for the vendors that name a protocol.
bool IsGenericVendor(const std::string& vendor);

}  // namespace recorder
