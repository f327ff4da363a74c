#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "recorder/device/model/model.h"

namespace recorder::onvif {

/// What is of use in an address that a camera names; user and password are not.
struct Uri {
  std::string scheme;  ///< lower case
  std::string host;    ///< only to be compared: many cameras know only that of an inner network
  int port = 0;        ///< that of the scheme when the address names none; 0 when that is not known either
  std::string path;    ///< with the query, percent-encoded where that is missing, braces included
};

/// Nothing when `text` is no absolute address with a host (RFC 3986), or names a port that cannot exist.
std::optional<Uri> ParseUri(std::string_view text);

/// The same, and nothing when the scheme is neither http nor https.
std::optional<Uri> ParseHttpUri(std::string_view text);

/// Where the picture at the address `text` is for us: the host is the one that the user typed, and so is the port where
/// the address names `servicePort`, as the camera's services do. Nothing when it is no HTTP address or "".
std::optional<ModelPath> SnapshotPath(std::string_view text, int servicePort);

}  // namespace recorder::onvif
