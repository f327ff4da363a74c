#pragma once

#include <string>

#include "recorder/records/records.h"

namespace recorder {

/// Something that a webhook is told.
struct Notice {
  enum class Kind {
    kChange,    ///< a camera has changed
    kFlapping,  ///< it changes too often to be told of each time
    kSteady,    ///< it did so, but has not changed for a while: this was its last change
    kTest,      ///< nothing has happened
  };
  Kind kind = Kind::kTest;
  CameraEvent event = {};
  std::string name = {};  ///< of the camera; "" where that tells its address
};

/// The notice as it is sent: JSON like that of EventJson, with "kind" and "name". A test has its kind alone.
std::string TextOf(const Notice& notice);

}  // namespace recorder
