#include <string>

#include "platform/device.h"
#include "recorder/device/check/stream_probe.h"
#include "recorder/net/camera_address.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/cause_table.h"

struct CameraVerify::Impl {
  recorder::CameraAddress address;
  std::string path;
  int videoType;
  int streamingType;
};

CameraVerify::CameraVerify(const std::string& address, int port, const std::string& user, const std::string& password,
                           const std::string& sourcePath, int videoType, int streamingType,
                           RTSP_PROTOCOL /*rtspProtocol*/)  // the check itself needs the video granted, not sent
    : impl(std::make_unique<Impl>(Impl{{address, port, user, password}, sourcePath, videoType, streamingType})) {}

CameraVerify::~CameraVerify() = default;

/// The path is that of the camera's usual stream, which need not be in the wanted codec. Whoever insists on RTSP gets
/// no stream over HTTP.
int CameraVerify::Verify() {
  recorder::CameraAddress address = impl->address;
  std::string path = impl->path;
  int streamingType = impl->streamingType;
  const recorder::OtherStream* other =
      recorder::RequestScope::Current().FindStream({address.host, address.port, path}, impl->videoType);
  if (other != nullptr && !(other->isOverHttp && streamingType == STREAMING_TYPE_RTSP)) {
    address.port = other->place.port;
    path = other->place.path;
    if (other->isOverHttp) streamingType = STREAMING_TYPE_HTTP;
  }
  return recorder::RowOf(recorder::ProbeStream(address, path, impl->videoType, streamingType)).result;
}
