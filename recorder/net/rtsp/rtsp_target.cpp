#include "recorder/net/rtsp/rtsp_target.h"

#include <string_view>

#include "recorder/net/percent.h"
#include "recorder/utility/text.h"

namespace recorder {

std::string RtspTarget::Uri() const {
  const std::string_view bare = WithoutBrackets(host);
  const std::string_view withoutZone = bare.substr(0, bare.find('%'));  // of a link-local address: our own affair
  return (isTls ? "rtsps://" : "rtsp://") + WithBrackets(withoutZone) + ':' + std::to_string(port) +
         (path.starts_with('/') ? "" : "/") + PercentEncoded(path, kAddressSigns);
}

}  // namespace recorder
