#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "recorder/device/find/stream_tally.h"
#include "recorder/net/camera_address.h"
#include "recorder/records/records.h"
#include "recorder/utility/outcome.h"

namespace recorder {

inline constexpr std::chrono::seconds kLongestMeasure{12};

/// What the user should change, or know.
enum class MeasureWarning {
  kKeyFramesFar,  ///< a picture takes as long as there is none
  kH265,          ///< some browsers cannot show it
};

/// What a stream is, as it came, whatever the camera claims of it.
struct MeasureResult {
  Outcome outcome = Outcome::kOk;
  std::string codec;  ///< the recorder's name for it, "H.264"; one that it does not know as the camera names it
  int width = 0;      ///< pixels, as they are decoded; 0: no key frame was whole
  int height = 0;
  std::string audio;  ///< codec of the audio beside it, as the camera offers it; "": none
  find::StreamFigures figures;
  std::vector<MeasureWarning> warnings;
  bool hasSentLogin = false;  ///< of a stored camera: a login went out
};

/// Told once in a second of the stream. False: what was seen by then is enough.
using OnMeasured = std::function<bool(const MeasureResult& soFar)>;

/// Plays the stream at `path` over RTSP, and says what came: until it is sure (see find::StreamTally), for `longest`
/// and kLongestMeasure at most, connecting included. A longer time without a key frame shows as that.
///
/// `path` may be a whole address, as TakeApart has it; the password is itself, and no token of a lent one. Opens a
/// RequestScope of its own: one session, and a wrong password is one refused login. Any thread.
MeasureResult Measure(CameraAddress address, std::string path, std::chrono::seconds longest,
                      const OnMeasured& onMeasured);

/// The same of a stored camera's stream, by the record that it is asked by: its password is lent for that. A camera
/// that is asked where its streams are may be asked for it.
MeasureResult MeasureStored(const CameraRecord& camera, std::chrono::seconds longest);

}  // namespace recorder
