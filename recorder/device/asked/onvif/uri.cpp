#include "recorder/device/asked/onvif/uri.h"

#include "recorder/net/camera_address.h"
#include "recorder/net/camera_url.h"

namespace recorder::onvif {

std::optional<ModelPath> SnapshotPath(std::string_view text, int servicePort) {
  const auto url = ParseHttpUrl(text);
  if (!url) return std::nullopt;
  if (url->port == servicePort) return ModelPath{url->path, std::nullopt};
  if ((url->scheme == "https") != (url->port == kHttpsPort)) return std::nullopt;  // a path tells TLS by its port alone
  return ModelPath{url->path, url->port};
}

}  // namespace recorder::onvif
