#pragma once

#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "recorder/records/records.h"

namespace recorder {

/// Whether both are the same camera: host, port, channel and path are.
bool IsSamePlace(const CameraRecord& one, const CameraRecord& other);

/// The same camera under another id; nothing when it is not among `stored`.
std::optional<CameraRecord> FindSamePlace(const CameraRecord& camera, const std::vector<CameraRecord>& stored);

/// Where the same camera stands already: in the records, or further up in a list.
class CameraPlaces {
 public:
  explicit CameraPlaces(const std::vector<CameraRecord>& stored);

  /// The first place of the same camera, such as "camera 3 (front door)"; "" for none.
  std::string Find(const CameraRecord& camera) const;
  void Add(const CameraRecord& camera, const std::string& place);

 private:
  std::map<std::tuple<std::string, int, std::string, std::string>, std::string> places_;
};

}  // namespace recorder
