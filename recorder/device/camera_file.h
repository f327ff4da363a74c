#pragma once

#include <memory>
#include <string>

#include "recorder/device/model.h"
#include "recorder/net/camera_address.h"
#include "recorder/utility/outcome.h"

// Capability files of cameras of a generic protocol: what each said of itself when it was last asked, one file a
// camera, in the format of the model files. They stand in the state folder under a hash of vendor, host and port, are
// replaced whole, and are removed when they are old or too many.
// Thread: any; also several processes may use the folder at once.

namespace recorder {

/// Path of the file kept for the camera of a generic `vendor` at `host` and `port`; "" when there is none. `variant`
/// tells files of one camera apart.
std::string KeptFile(const std::string& vendor, const std::string& host, int port, const std::string& variant = "");

/// What is known of one camera.
struct KnownCamera {
  Outcome outcome = Outcome::kNotUnderstood;  ///< of asking the camera; kOk as well when a recent file was enough
  std::shared_ptr<const Model> model;         ///< null: neither the camera nor a kept file tells about the channel
  std::string channel;                        ///< as `model` has it; PSIA: the default one for one that is not there
  std::string file;                           ///< that `model` is kept in; "" when it is kept nowhere
};

enum class Freshness {
  kRecent,  ///< a file younger than a day will do
  kNow,     ///< the camera is asked in any case
};

/// Asks the camera of a generic `vendor` what it can do on `channel` and keeps the answer. When it gives none, `model`
/// is that of an older file if there is one. Of the threads of this process one at a time asks a camera. Within one
/// request a camera that could not be asked is not asked again. Contacts the camera, within the deadline of the
/// thread's RequestScope; a failure is logged with host, port and outcome.
KnownCamera LearnCamera(const std::string& vendor, const CameraAddress& address, const std::string& channel,
                        Freshness freshness);

}  // namespace recorder
