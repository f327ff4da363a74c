#pragma once

#include <optional>
#include <string>

#include "recorder/http/own_request.h"
#include "recorder/records/records.h"

namespace recorder {

// What the addresses of stored cameras have in common. Throws HttpError.

/// Its refusal.
HttpError NoSuchCamera();

/// The id in the address of a request.
int IdOf(const OwnRequest& request);

/// The camera of that id.
CameraRecord FindCamera(const Records& records, const OwnRequest& request);

/// The same where it may be contacted: 409 with the cause "disabled" where it is switched off.
CameraRecord FindEnabled(const Records& records, const OwnRequest& request);

/// The record that a stream of the camera is asked by; "": its main one. 404 where it has none of that name.
CameraRecord StreamRecord(const Records& records, const CameraRecord& camera, const std::string& stream);

/// The same; nothing where the camera has no such stream.
std::optional<CameraRecord> FindStreamRecord(const Records& records, const CameraRecord& camera,
                                             const std::string& stream);

}  // namespace recorder
