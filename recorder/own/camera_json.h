#pragma once

#include <json/value.h>

#include <optional>
#include <string>
#include <vector>

#include "recorder/records/camera_state.h"
#include "recorder/records/records.h"

namespace recorder {

// Stored cameras as clients get them. No password is in them.

/// What stands in the record, as it is: a path with a login in it, too.
Json::Value PlainJson(const CameraRecord& camera);

/// A camera of `records` in a list. `state`: nothing where there was no contact with it. A path with its login is "".
Json::Value CameraSummary(const CameraRecord& camera, const std::vector<std::string>& streams,
                          const std::optional<CameraState>& state, const Records& records);

/// All that is stored of a camera.
struct WholeCamera {
  CameraRecord record;
  std::vector<CameraStream> streams;
  std::vector<CameraFact> facts;
  std::optional<CameraState> state;
  bool hasPassword = false;
};

/// Reads a camera; nothing where there is no such one. One whose password cannot be read has none, which is logged.
std::optional<WholeCamera> ReadCamera(const Records& records, int id);

/// Paths with its login are "".
Json::Value CameraJson(const WholeCamera& camera, const Records& records);

// Its parts. A path with a login in it is "".
Json::Value StreamJson(const CameraStream& stream);
Json::Value FactJson(const CameraFact& fact);

}  // namespace recorder
