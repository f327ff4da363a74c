#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace recorder {

inline constexpr char kUserVendor[] = "User";  ///< vendor of cameras that are reached by a path that the user gives

/// What a setting can be, and what it is unless told otherwise ("" when there is nothing to choose).
struct Choices {
  std::vector<std::string> values;
  std::string preset;
};

struct ModelCodec {
  std::string name;                      ///< as GetVideoType takes it
  std::vector<std::string> streamTypes;  ///< as GetStreamingType takes them, the preferred one first
};

/// A path of the camera, with placeholders (see path_template.h), and its port where that is not the one the user
/// typed.
struct ModelPath {
  std::string path;
  std::optional<int> port;
  bool isTls = false;  ///< of a stream: RTSP goes inside TLS
  bool operator==(const ModelPath&) const = default;
};

/// A stream beside the usual one, in another codec.
struct ModelStream {
  std::string codec;  ///< as GetVideoType takes it
  ModelPath from;
};

/// Where a camera that was asked over ONVIF is asked for a key frame.
struct OnvifMedia {
  std::string path;  ///< of its media service
  bool isMedia2 = false;
  std::map<std::string, std::string> profiles;  ///< tokens, by the codec of the profile's stream
};

enum class ModelSnapshotKind { kStream, kHttpJpeg, kHttpMjpeg };

/// Snapshot settings that a model offers for one codec, the preferred one first.
struct SnapshotSettings {
  std::string codec;
  std::vector<std::string> values;
};

struct ModelSnapshot {
  ModelSnapshotKind kind = ModelSnapshotKind::kStream;
  ModelPath from;  ///< unused for kStream
  std::vector<SnapshotSettings> settings;
};

enum class ModelCheck {
  kStream,  ///< by the stream
  kDevice,  ///< by the snapshot over HTTP
};

/// One camera model, as a model file describes it.
struct Model {
  std::string vendor;
  std::string name;
  std::string id;  ///< names the model in its capability document

  bool isVideoServer = false;
  Choices channels;
  std::vector<ModelCodec> codecs;
  std::string presetCodec;  ///< "": whatever the camera sends
  Choices frameRates;
  Choices resolutions;
  Choices qualities;
  bool hasOwnFrameRates = false;   ///< each stream has a frame rate of its own
  bool hasOwnResolutions = false;  ///< each stream has a resolution of its own
  bool hasOwnQualities = false;    ///< each stream has a quality of its own
  int streamCount = 1;             ///< 0: not known

  std::vector<std::string> audioChannels;
  std::vector<std::string> motionChannels;
  int digitalInputs = 0;
  bool hasSeparateInputs = false;       ///< several digital inputs can be watched at once
  bool hasInputSettings = false;        ///< the inputs' rest state can be set
  unsigned int rtspProtocols = 0;       ///< bits 1 << RTSP_PROTOCOL
  int presetRtspProtocol = 0;           ///< an RTSP_PROTOCOL
  bool hasRtspKeepAlive = true;         ///< the session is kept alive by requests
  unsigned int codecOptimizations = 0;  ///< bits 1 << level
  int presetCodecOptimization = 1;
  std::string presetUser;
  int fisheyeType = 0;        ///< 0: no fisheye lens
  int streamFisheyeType = 0;  ///< 0: the stream is not dewarped by the camera
  bool hasEdgeStorage = false;

  std::optional<ModelPath> stream;        ///< none: the user gives the path
  std::vector<ModelStream> otherStreams;  ///< for codecs other than that of `stream`, one each
  std::optional<OnvifMedia> media;        ///< of these streams; only a camera itself tells
  ModelSnapshot snapshot;
  ModelCheck check = ModelCheck::kStream;

  std::int64_t readAt = 0;  ///< when the camera named its stream, in seconds since 1970; 0: a document says so
};

}  // namespace recorder
