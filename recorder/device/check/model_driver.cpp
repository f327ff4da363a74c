#include "recorder/device/check/model_driver.h"

#include <algorithm>
#include <utility>

#include "recorder/device/asked/onvif/synchronization.h"
#include "recorder/device/check/http_probe.h"
#include "recorder/device/check/stream_picture.h"
#include "recorder/device/model/path_template.h"
#include "recorder/net/source_path.h"
#include "recorder/request/request_scope.h"

namespace recorder {
namespace {

/// A camera with one channel has it under any name; of several, a name that the model does not have is left to the
/// camera, so that a test does not pass for another channel.
std::string ChannelToAsk(const Model& model, const std::string& channel) {
  const bool isPreset = channel.empty() || model.channels.values.size() == 1;
  return isPreset ? model.channels.preset : channel;
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

bool ModelDriver::NeedsSourcePath() { return !model_->stream; }

bool ModelDriver::HasStreamPath() { return model_->stream && model_->check == ModelCheck::kStream; }

int ModelDriver::GetStreamPath(std::string& path, int& port) {
  if (!model_->stream && parameters_.sourcePath.empty()) return -1;
  if (!model_->stream) {
    path = PutTogether(parameters_.sourcePath, parameters_.address);
    port = parameters_.address.port;
    return 0;
  }
  path = StreamPath(*model_->stream);
  UsePort(*model_->stream, port);
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

int ModelDriver::SelectVideoType(int videoType, int streamNumber) {
  videoType_ = videoType;
  streamNumber_ = streamNumber;
  return 0;
}

int ModelDriver::GetSnapshotPath(std::string& path, int& port, int& kind) {
  kind = PlatformKind(model_->snapshot.kind);
  if (kind == SNAPSHOT_KIND_STREAM && !model_->otherStreams.empty()) kind = SNAPSHOT_KIND_BY_CODEC;
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
  std::string path;
  if (other != nullptr) {
    path = StreamPath(other->from);
    UsePort(other->from, camera.port);
    RememberKeyFrameCall(other->codec, path, camera.port);
  } else if (GetStreamPath(path, camera.port) != 0) {
    return Outcome::kNoPath;
  }
  return GrabPicture(camera, path, jpeg);
}

/// The stream in the codec that was selected, where that is not the usual one; null for every other codec.
const ModelStream* ModelDriver::OtherStream() const {
  const auto& all = model_->otherStreams;
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const auto& s) { return GetVideoType(s.codec) == videoType_; });
  return found == all.end() ? nullptr : &*found;
}

/// Whoever checks the usual stream may choose by codec.
void ModelDriver::RememberStreams(const std::string& usualPath, int usualPort) const {
  const CameraAddress& camera = parameters_.address;
  for (const ModelStream& other : model_->otherStreams) {
    const int port = other.from.port.value_or(camera.port);
    RequestScope::Current().RememberStream({camera.host, usualPort, usualPath}, GetVideoType(other.codec),
                                           {camera.host, port, StreamPath(other.from)});
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

std::string ModelDriver::StreamPath(const ModelPath& stream) const {
  CameraAddress camera = parameters_.address;
  camera.port = stream.port.value_or(camera.port);
  camera.isTls = stream.isTls;
  return PutTogether(FillPath(stream.path, {{"channel", channel_}, {"stream", std::to_string(streamNumber_ + 1)}}),
                     camera);
}

std::string ModelDriver::HttpSnapshotPath(const std::string& setting) const {
  return FillPath(model_->snapshot.from.path,
                  {{"channel", channel_}, {"setting", setting.empty() ? PreferredSetting() : setting}});
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
