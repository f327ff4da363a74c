#pragma once

#include <string>

#include "recorder/host/api_call.h"
#include "recorder/host/module_library.h"
#include "recorder/records/records.h"

namespace recorder {

// The methods that can be called with what is stored of a camera.
inline constexpr char kTestMethod[] = "CameraTest";
inline constexpr char kPictureMethod[] = "GetSnapshot";

/// The parameters of a camera's test.
Json::Value TestParams(const CameraRecord& camera, const std::string& password);

/// The call of either method with what is stored of a camera; its password stays in the records until the login. Throws
/// std::runtime_error when the module has no such method.
ApiCall StoredCall(const ModuleLibrary& module, const std::string& method, const CameraRecord& camera);

}  // namespace recorder
