#include <string>

#include "platform/device.h"
#include "recorder/device/check/stream_probe.h"
#include "recorder/net/camera_address.h"
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

int CameraVerify::Verify() {
  return recorder::RowOf(recorder::ProbeStream(impl->address, impl->path, impl->videoType, impl->streamingType)).result;
}
