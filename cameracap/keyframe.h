#pragma once

#include <sys/time.h>

#include <cstdint>
#include <string>

#include "platform/media.h"

/// Smooths the capture times of a stream into presentation times: steps within a tolerance are kept, jumps are replaced
/// by the mean step of their direction, and the result never strays from the current time by more than the tolerance.
/// Times are microseconds. One stream, one thread.
class PtsSmoother {
 public:
  /// The presentation time of the next part. `formatType` is an ES_CLOCK, which decides the tolerance.
  std::int64_t Step(int formatType, const timeval& captureTime, std::int64_t now);

 private:
  std::int64_t Increment(std::int64_t step, std::int64_t tolerance);

  std::int64_t lastRawUs = 0;
  std::int64_t pts = 0;
  std::uint32_t meanForwardStep = 0;
  std::int32_t meanBackwardStep = 0;  ///< negative or 0
};

/// Opens a camera's RTP stream and decodes its first key frame to JPEG. Neither output slot may be null; they are
/// cleared first. On success returns 0 and `*jpeg` is malloc memory that the caller frees; on failure -1 or the
/// decoder's code, and the slots hold what the decoder left. One connection, which lives as long as the call.
int GetImgByRTP(const std::string& host, int port, const std::string& user, const std::string& password,
                const std::string& path, unsigned char** jpeg, int* jpegSize, int videoType, int camId);

/// Hands `unit` (may be null) over to the packetizer and drains it: what comes out first as a key frame is returned,
/// for the caller to destroy, and all else is destroyed here. Null when no key frame came out.
MediaUnit* DoPacketizeGetIframe(MediaUnit* unit, Packetizer& packetizer, MP4Stream* stream);
