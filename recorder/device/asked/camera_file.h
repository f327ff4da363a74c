#pragma once

#include <memory>
#include <string>

#include "recorder/device/model/model.h"
#include "recorder/net/camera_address.h"
#include "recorder/records/camera_record.h"
#include "recorder/utility/outcome.h"

// Capability files of cameras of a generic protocol: what each said of itself when it was last asked, one file a
// camera, in the format of the model files, with one model for each channel that was asked about, the latest first.
// They stand in the state folder under a hash of vendor, host and port, are replaced whole, and are removed when they
// are old or too many.
// Thread: any; also several processes may use the folder at once.

namespace recorder {

/// Path of the file kept for the camera of a generic `vendor` at `host` and `port`; "" when there is none. `variant`
/// tells files of one camera apart.
std::string KeptFile(const std::string& vendor, const std::string& host, int port, const std::string& variant = "");

/// What the camera file at `file` says for `channel`; where it was not asked about, what it says for the channel that
/// was asked about last; and the built-in model when there is no such file, or none that can be read (logged).
std::shared_ptr<const Model> ReadCameraFile(const std::string& vendor, const std::string& file,
                                            const std::string& channel);

/// What is known of a stored camera without contact: the model that a file knows, or what the camera said; null for
/// nothing.
std::shared_ptr<const Model> KnownModel(const CameraRecord& camera);

/// The model of one camera by what it said of itself, now or before, and how asking it ended.
struct AskedModel {
  Outcome outcome = Outcome::kNotUnderstood;  ///< of asking the camera; kOk as well when a recent file was enough
  std::shared_ptr<const Model> model;         ///< null: neither the camera nor a kept file tells about the channel
  std::string channel;                        ///< as the camera has it; PSIA: the default one for one that is not there
  std::string file;                           ///< that `model` is kept in; "" when it is kept nowhere
};

enum class Freshness {
  kRecent,  ///< an answer of the last day will do
  kNow,     ///< the camera is asked in any case
};

/// Asks the camera of a generic `vendor` what it can do on `channel` and keeps the answer. When it gives none, `model`
/// is that of an older file if there is one. One thread or process at a time asks a camera. Within one request a camera
/// that could not be asked is not asked again. Contacts the camera, within the deadline of the thread's RequestScope; a
/// failure is logged with host, port and outcome.
AskedModel LearnCamera(const std::string& vendor, const CameraAddress& address, const std::string& channel,
                       Freshness freshness);

}  // namespace recorder
