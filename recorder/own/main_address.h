#pragma once

#include <string>

#include "recorder/records/records.h"

namespace recorder {

/// The whole address of the stream that a stored camera is asked by, as its model file tells, or the camera itself did
/// when it was last asked, or its source path; without a login. "" where that is not known. Contacts nobody.
std::string MainAddress(const CameraRecord& camera);

/// Whether that stream is one over HTTP, as far as address, path and port tell. Contacts nobody.
bool IsMainOverHttp(const CameraRecord& camera);

}  // namespace recorder
