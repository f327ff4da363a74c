#include <algorithm>
#include <cstdlib>
#include <string>

#include "platform/device.h"
#include "recorder/device/device_api.h"
#include "recorder/device/http_probe.h"
#include "recorder/utility/handle.h"

int SnapshotGetFromAPI(const std::string& host, int port, const std::string& user, const std::string& password,
                       DeviceAPIHandler& api, const std::string& setting, unsigned char** jpeg, int* jpegSize,
                       int /*videoType*/) {
  if (!api.impl->device) return -1;
  std::string picture;
  const std::string path = api.impl->device->HttpSnapshotPath(setting);
  if (recorder::FetchPicture({host, port, user, password}, path, picture) != recorder::Outcome::kOk) return -1;
  recorder::MallocBytes bytes(static_cast<unsigned char*>(std::malloc(picture.size())));
  if (!bytes) return -1;
  std::copy(picture.begin(), picture.end(), bytes.get());
  *jpeg = bytes.release();
  *jpegSize = static_cast<int>(picture.size());  // at most kMaxHttpBody
  return 0;
}
