#include "recorder/media/depacketizer.h"
#include "recorder/net/sdp.h"
#include "tests/fuzz/fuzz.h"

// A session description, up to the payload format that libavformat chooses for its video.

namespace recorder {

void RunInput(std::string_view input) {
  const auto video = FindVideo(input);
  if (!video) return;
  ResolveControl("rtsp://127.0.0.1:554/live", video->control);
  const auto again = FindVideo(video->description);
  Require(again && (again->codec == video->codec || again->codec.empty()) && again->control.empty());
  const auto depacketizer = Depacketizer::Open(video->description, [](auto) {});
  if (depacketizer) depacketizer->Configuration();
}

}  // namespace recorder
