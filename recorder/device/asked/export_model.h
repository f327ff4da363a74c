#pragma once

#include <string>
#include <vector>

#include "recorder/net/camera_address.h"

// What is known of one camera, as a model file that can be handed on: without its address, its names, tokens, serial
// number and login. A path that seems to hold one of these (see path_privacy.h) is left out. The file holds to the
// schema. Thread: any; call SetModelFolders() before.

namespace recorder {

/// "": as the camera calls itself.
struct ExportNames {
  std::string vendor;
  std::string model;
};

/// The camera, by what no file may tell of it.
struct ExportedCamera {
  CameraAddress address;  ///< with the login
  std::string endpoint = {};
  std::string serial = {};
};

struct ModelExport {
  std::string text;                  ///< of the model file; "": there is none
  std::vector<std::string> remarks;  ///< what was left out, or why there is none; hold nothing private
};

/// What the camera of a generic `vendor` at `address` said when it was last asked; whoever exports it need not reach
/// it. Channels that were asked about and differ by their number alone are one model with {channel}. What the recorder
/// only assumes is left out.
ModelExport ExportAskedCamera(const std::string& vendor, const ExportedCamera& camera, const ExportNames& names);

/// A stream that its user has found.
struct UserStream {
  ExportedCamera camera;
  std::string path;   ///< or a whole address
  std::string codec;  ///< "": not known
  bool isOverHttp = false;
  std::string day;  ///< on which it was tested: "2026-01-31"
};

/// The stream of a camera of vendor "User"; `names` must be there. Its port is told where it is the usual one: any
/// other may be of the user's network.
ModelExport ExportUserStream(UserStream stream, const ExportNames& names);

}  // namespace recorder
