#include "recorder/device/find/stored_as.h"

#include <algorithm>

#include "recorder/device/model/built_in_models.h"
#include "recorder/net/source_path.h"
#include "recorder/records/camera_record.h"

namespace recorder {
namespace {

/// Where a model's camera is asked for pictures over HTTP, if it is: its model names the port of the stream.
int WebPort(const FindResult& result, int otherwise) {
  const auto web = std::ranges::find_if(result.ports, &FoundPort::speaksHttp);
  return web == result.ports.end() ? otherwise : web->number;
}

}  // namespace

StoredAs StoreAs(const std::string& host, const FindResult& result, const ListedStream& stream) {
  const bool isMain = stream.name == kOwnStream;
  if (isMain && stream.isShownByOnvif) return {kOnvifVendor, kGenericName, result.onvifPort, stream.channel, ""};
  if (isMain && result.onvifPort == 0 && !result.modelVendor.empty()) {
    const int port = result.isPortOfModel ? WebPort(result, stream.port) : stream.port;
    return {result.modelVendor, result.modelName, port, stream.channel, ""};
  }
  const CameraAddress camera{host, stream.port, "", "", stream.isTls};
  return {kUserVendor, "", stream.port, "", PutTogether(stream.path, camera)};
}

}  // namespace recorder
