#pragma once

#include <cstdint>
#include <map>
#include <memory>
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

// Names of a camera's streams. The main one is what a camera is usually asked for.
inline constexpr char kMainStream[] = "main";
inline constexpr char kSubStream[] = "sub";
inline constexpr char kThirdStream[] = "third";

struct ModelStream {
  std::string name = kMainStream;
  std::string codec;        ///< as GetVideoType takes it; "": whatever the camera sends
  bool isOverHttp = false;  ///< else over RTSP
  ModelPath from;
};

/// Who says what a model says, the surest first.
enum class SaidBy {
  kDocument,  ///< a document that was opened
  kAgreeing,  ///< two independent sources
  kReported,  ///< a collection that cites the document
  kCamera,    ///< the camera itself
  kUser,
};

/// Where facts come from. All but `key` and `document` may be "".
struct ModelSource {
  std::string key;  ///< its name in the model file
  std::string document;
  std::string url;
  std::string page;
  std::string checked;  ///< the day it was read, as 2026-01-31
  SaidBy by = SaidBy::kReported;
};

/// A member of a model file that says something of the camera, and who says so; see model_facts.h.
struct ModelFact {
  static constexpr std::uint16_t kNoSource = 0xFFFF;

  std::uint16_t member;
  std::uint16_t source = kNoSource;  ///< index in Model::sources
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
  std::string id;    ///< names the model in its capability document
  std::string note;  ///< for the user, or ""

  bool isVideoServer = false;
  Choices channels;
  bool hasOtherChannels = false;   ///< any channel is asked for as it was typed
  std::vector<ModelCodec> codecs;  ///< none: not known, and the main stream comes over RTSP
  std::string presetCodec;         ///< "": whatever the camera sends
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

  std::vector<ModelStream> streams;  ///< the main one in the preset codec first; none: the user gives the path
  std::optional<OnvifMedia> media;   ///< of these streams; only a camera itself tells
  ModelSnapshot snapshot;
  ModelCheck check = ModelCheck::kStream;

  std::int64_t readAt = 0;  ///< when the camera named its stream, in seconds since 1970; 0: a document says so

  std::vector<ModelFact> facts;  ///< all that the file says of the camera
  std::shared_ptr<const std::vector<ModelSource>>
      sources;  ///< of its facts, shared by the models of a file; may be null
};

}  // namespace recorder
