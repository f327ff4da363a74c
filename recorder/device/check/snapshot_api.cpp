#include <algorithm>
#include <cstdlib>
#include <string>

#include "platform/device.h"
#include "recorder/device/check/device_api.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/handle.h"

int SnapshotGetFromAPI(const std::string& host, int port, const std::string& user, const std::string& password,
                       DeviceAPIHandler& api, const std::string& setting, unsigned char** jpeg, int* jpegSize,
                       int videoType) {
  if (!api.impl->driver) return -1;
  const bool takesAny = recorder::RequestScope::Current().TakesAnyCodec();
  api.impl->driver->SelectVideoType(takesAny ? VIDEO_TYPE_ANY : videoType, 0);
  std::string picture;
  const recorder::Outcome outcome = api.impl->driver->TakeSnapshot({host, port, user, password}, setting, picture);
  recorder::RequestScope::Current().SetCause(outcome);
  if (outcome != recorder::Outcome::kOk) return -1;
  recorder::MallocBytes bytes(static_cast<unsigned char*>(std::malloc(picture.size())));
  if (!bytes) {
    recorder::RequestScope::Current().SetCause(recorder::Outcome::kRecorderFailed);
    return -1;
  }
  std::copy(picture.begin(), picture.end(), bytes.get());
  *jpeg = bytes.release();
  *jpegSize = static_cast<int>(picture.size());  // at most kLargestHttpPicture
  return 0;
}
