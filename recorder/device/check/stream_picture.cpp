#include "recorder/device/check/stream_picture.h"

#include <sys/time.h>

#include "platform/media.h"
#include "recorder/request/request_scope.h"

namespace recorder {

/// A part of this recorder's fetcher is a key frame that was decoded, as a JPEG.
Outcome GrabPicture(const CameraAddress& address, const std::string& path, std::string& jpeg) {
  RtpFetch fetcher(address.host, address.port, path, address.user, address.password, false, "", STREAMING_TYPE_RTSP,
                   RTSP_PROTOCOL_AUTO, 0, "", "");
  unsigned int partNumber = 0;
  int headerLength = 0;
  if (fetcher.NextPartInfo(partNumber, nullptr, 0, headerLength) != 0) {
    return RequestScope::Current().Cause().value_or(Outcome::kNotUnderstood);  // which the fetcher has told
  }
  int size = 0;
  timeval captureTime{};
  fetcher.GetImgContentInfo(size, captureTime);
  std::string picture(static_cast<std::size_t>(size), '\0');
  if (fetcher.FetchContent(reinterpret_cast<unsigned char*>(picture.data()), static_cast<unsigned int>(size)) != 0) {
    return Outcome::kNotUnderstood;
  }
  jpeg = std::move(picture);
  return Outcome::kOk;
}

}  // namespace recorder
