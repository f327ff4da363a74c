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

/// Opens a camera's RTP stream and decodes its first key frame to JPEG. Both output slots must be non-null; they start
/// as null and 0. On success returns 0 and `*jpeg` is malloc memory that the caller frees; on failure -1 or the
/// decoder's code, and the slots hold what the decoder left. One connection, which lives as long as the call.
int GetImgByRTP(const std::string& host, int port, const std::string& user, const std::string& password,
                const std::string& path, unsigned char** jpeg, int* jpegSize, int videoType, int camId);

/// Feeds `unit` (may be null; the packetizer takes it over) and returns the first key frame that comes out, which the
/// caller destroys, or null. All other output units are destroyed.
MediaUnit* DoPacketizeGetIframe(MediaUnit* unit, Packetizer& packetizer, MP4Stream* stream);
