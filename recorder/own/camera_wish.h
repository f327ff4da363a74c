#pragma once

#include <optional>
#include <string>

#include "recorder/http/own_request.h"
#include "recorder/records/records.h"

namespace recorder {

/// What a request wants of a stored camera, or of a new one. Its password is wiped at the end.
struct CameraWish {
  CameraWish() = default;
  ~CameraWish() {
    if (password) Wipe(*password);
  }
  CameraWish(const CameraWish&) = delete;
  CameraWish& operator=(const CameraWish&) = delete;

  CameraRecord record;                  ///< as it is to be
  CameraChange change;                  ///< what leads there, but for the password
  std::optional<std::string> password;  ///< nothing: that of before
};

/// Throws HttpError 409, with the other `camera`, where the same one is stored under another id.
void RefuseStoredTwice(const CameraRecord& camera, const Records& records);

/// Reads the body of a request about a camera that was `before`, or about a new one, into `wish`: all that is not named
/// stays. Vendors and models become the recorder's own names. Throws HttpError: 400, which names the `member`, for what
/// cannot be stored, with the `nearest` models where one is unknown; with "force" in the body that is no mistake. What
/// is stored then checks, but for "force", that no other record has that place (see RefuseStoredTwice). `body` and
/// `records` must outlive `wish`, which stays where it is.
void ReadWish(const Json::Value& body, const CameraRecord& before, const Records& records, CameraWish& wish);

}  // namespace recorder
