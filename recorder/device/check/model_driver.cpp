#include "recorder/device/check/model_driver.h"

#include <algorithm>
#include <utility>

#include "recorder/device/asked/onvif/synchronization.h"
#include "recorder/device/check/http_probe.h"
#include "recorder/device/check/stream_picture.h"
#include "recorder/device/model/model_stream.h"
#include "recorder/device/model/path_template.h"
#include "recorder/media/codecs.h"
#include "recorder/net/source_path.h"
#include "recorder/request/request_scope.h"

namespace recorder {
namespace {

/// A main stream beside the usual one, in another codec.
bool IsOtherStream(const Model& model, const ModelStream& stream) {
  return stream.name == kMainStream && &stream != &model.streams.front();
}

bool HasOtherStream(const Model& model) {
  return std::any_of(model.streams.begin(), model.streams.end(),
                     [&](const ModelStream& stream) { return IsOtherStream(model, stream); });
}

SNAPSHOT_KIND PlatformKind(ModelSnapshotKind kind) {
  switch (kind) {
    case ModelSnapshotKind::kStream:
      return SNAPSHOT_KIND_STREAM;
    case ModelSnapshotKind::kHttpJpeg:
      return SNAPSHOT_KIND_HTTP_JPEG;
    case ModelSnapshotKind::kHttpMjpeg:
      return SNAPSHOT_KIND_HTTP_MJPEG;
  }
  return SNAPSHOT_KIND_NONE;
}

}  // namespace

ModelDriver::ModelDriver(std::shared_ptr<const Model> model, DriverParameters parameters)
    : model_(std::move(model)),
      parameters_(std::move(parameters)),
      channel_(ChannelToAsk(*model_, parameters_.channel)) {}

bool ModelDriver::NeedsSourcePath() { return model_->streams.empty(); }

bool ModelDriver::HasStreamPath() { return !model_->streams.empty() && model_->check == ModelCheck::kStream; }

int ModelDriver::GetStreamPath(std::string& path, int& port) {
  if (model_->streams.empty() && parameters_.sourcePath.empty()) return -1;
  if (model_->streams.empty()) {
    path = PutTogether(parameters_.sourcePath, parameters_.address);
    port = parameters_.address.port;
    return 0;
  }
  const ModelStream& usual = model_->streams.front();
  path = PathOf(usual);
  UsePort(usual.from, port);
  RememberStreams(path, port);
  RememberKeyFrameCall(model_->presetCodec, path, port);
  return 0;
}

Outcome ModelDriver::VerifyConnection() {
  if (model_->check != ModelCheck::kDevice) return Outcome::kNoPath;
  CameraAddress address = parameters_.address;
  UsePort(model_->snapshot.from, address.port);
  const Outcome outcome = ProbeHttpStream(address, HttpSnapshotPath(""));
  RequestScope::Current().SetCause(outcome);
  return outcome;
}

int ModelDriver::SelectVideoType(int videoType, int /*streamNumber*/) {
  videoType_ = videoType;
  return 0;
}

int ModelDriver::GetSnapshotPath(std::string& path, int& port, int& kind) {
  kind = PlatformKind(model_->snapshot.kind);
  if (kind == SNAPSHOT_KIND_STREAM && HasOtherStream(*model_)) kind = SNAPSHOT_KIND_BY_CODEC;
  if (model_->snapshot.kind == ModelSnapshotKind::kStream) return GetStreamPath(path, port);
  path = HttpSnapshotPath("");
  UsePort(model_->snapshot.from, port);
  return 0;
}

Outcome ModelDriver::TakeSnapshot(const CameraAddress& address, const std::string& setting, std::string& jpeg) {
  const ModelStream* other = OtherStream();
  const bool isStream = other != nullptr || model_->snapshot.kind == ModelSnapshotKind::kStream;
  if (!isStream) return FetchPicture(address, HttpSnapshotPath(setting), jpeg);
  CameraAddress camera = address;
  camera.port = parameters_.address.port;
  if (other != nullptr) return TakePictureOf(*other, camera, jpeg);
  std::string path;
  if (GetStreamPath(path, camera.port) != 0) return Outcome::kNoPath;
  return GrabPicture(camera, path, jpeg);
}

Outcome ModelDriver::TakePictureOf(const ModelStream& other, CameraAddress camera, std::string& jpeg) const {
  UsePort(other.from, camera.port);
  if (other.isOverHttp) {
    camera.isTls = other.from.isTls;
    return FetchPicture(camera, StreamPath(other, channel_), jpeg);
  }
  const std::string path = PathOf(other);
  RememberKeyFrameCall(other.codec, path, camera.port);
  return GrabPicture(camera, path, jpeg);
}

/// The stream in the codec that was selected, where that is not the usual one; null for every other codec.
const ModelStream* ModelDriver::OtherStream() const {
  const Codec* codec = CodecOfType(videoType_);
  const ModelStream* found = codec == nullptr ? nullptr : FindModelStream(*model_, kMainStream, codec->name);
  return found != nullptr && IsOtherStream(*model_, *found) ? found : nullptr;
}

/// Whoever checks the usual stream may choose by codec.
void ModelDriver::RememberStreams(const std::string& usualPath, int usualPort) const {
  const CameraAddress& camera = parameters_.address;
  for (const ModelStream& other : model_->streams) {
    if (!IsOtherStream(*model_, other)) continue;
    const StreamPlace place{camera.host, other.from.port.value_or(camera.port), PathOf(other)};
    RequestScope::Current().RememberStream({camera.host, usualPort, usualPath},
                                           {GetVideoType(other.codec), other.isOverHttp, place});
  }
}

/// A camera that was asked over ONVIF gives a key frame over ONVIF as well.
void ModelDriver::RememberKeyFrameCall(const std::string& codec, const std::string& path, int port) const {
  if (!model_->media || !model_->media->profiles.contains(codec)) return;
  const CameraAddress& camera = parameters_.address;
  RequestScope::Current().RememberKeyFrameCall(
      {camera.host, port, path}, [model = model_, codec, host = camera.host, servicePort = camera.port](
                                     const std::string& user, const std::string& password, Clock::time_point end) {
        return onvif::SetSynchronizationPoint({host, servicePort, user, password}, *model->media,
                                              model->media->profiles.at(codec), end) == Outcome::kOk;
      });
}

/// As it travels through the module: a whole address inside TLS.
std::string ModelDriver::PathOf(const ModelStream& stream) const {
  CameraAddress camera = parameters_.address;
  camera.port = stream.from.port.value_or(camera.port);
  camera.isTls = stream.from.isTls;
  return PutTogether(StreamPath(stream, channel_), camera);
}

std::string ModelDriver::HttpSnapshotPath(const std::string& setting) const {
  const std::string chosen = setting.empty() ? PreferredSetting() : setting;
  return FillPath(model_->snapshot.from.path, {.channel = channel_, .setting = chosen});
}

std::string ModelDriver::PreferredSetting() const {
  const auto& all = model_->snapshot.settings;
  if (all.empty()) return "";
  const auto preset =
      std::find_if(all.begin(), all.end(), [&](const auto& s) { return s.codec == model_->presetCodec; });
  return (preset == all.end() ? all.front() : *preset).values.front();
}

/// The model names the port, so the password that was lent for the camera may go there.
void ModelDriver::UsePort(const ModelPath& path, int& port) const {
  if (!path.port) return;
  port = *path.port;
  RequestScope::Current().AllowPort(parameters_.address.host, port);
}

}  // namespace recorder
