#include "cameracap/snapshot.h"

#include <cstddef>
#include <cstdio>
#include <list>
#include <string>
#include <string_view>
#include <utility>

#include "cameracap/cameracap.h"
#include "cameracap/keyframe.h"
#include "cameracap/parameters.h"
#include "platform/utility.h"

int GetSnapshot(const std::string& host, int port, const std::string& user, const std::string& password,
                DeviceAPIHandler& api, const std::string& setting, unsigned char** jpeg, int* jpegSize,
                const std::string& videoTypeName, int camId) {
  const int videoType = GetVideoType(videoTypeName);
  std::string path;
  int kind = SNAPSHOT_KIND_NONE;
  if (api.NeedsSourcePath()) api.SelectVideoType(videoType, 0);
  if (api.GetSnapshotPath(path, port, kind) != 0) {
    VTPrintf(LOG_TYPE_FAILURE, nullptr, nullptr, kLogSource, 275, "GetSnapshot", "Failed to get snapshot path.\n");
    return -1;
  }
  if (kind == SNAPSHOT_KIND_STREAM) {
    return GetImgByRTP(host, port, user, password, path, jpeg, jpegSize, videoType, camId);
  }
  return SnapshotGetFromAPI(host, port, user, password, api, setting, jpeg, jpegSize, videoType);
}

namespace {

constexpr char kDefaultPicture[] = "../images/add_camera_default.png";

struct SnapshotRequest {
  explicit SnapshotRequest(const ParameterReader& read)
      : camId(read.Int("camId")),
        port(read.Int("camPort")),
        jsonResponse(read.Bool("jsonResponse")),
        host(read.String("camIP")),
        user(read.String("camUserName")),
        password(read.String("camPassword")),
        sourcePath(read.String("camSourcePath")),
        cameraModel(read.String("camModel")),
        channel(read.String("camChannel")),
        videoTypeName(read.String("camVideoType")) {}

  int camId;
  int port;
  bool jsonResponse;
  std::string host;
  std::string user;
  std::string password;
  std::string sourcePath;
  std::string cameraModel;
  std::string channel;
  std::string videoTypeName;
};

/// Loads the model's capability and replaces a channel that the model does not have.
bool LoadModel(SnapshotRequest& snapshot, const VendorAndModel& camera, CamCapHandler& capability) {
  std::string capFilePath;
  if (IsGenericApi(camera.vendor, camera.model)) {
    capFilePath = GetRealCapFilePath(camera.vendor, snapshot.host, snapshot.port, "");
  }
  if (capability.LoadCapability(DP_LOAD_FROM_MODEL_FILES, camera.vendor, camera.model, snapshot.channel, capFilePath) !=
      0) {
    VTPrintf(LOG_TYPE_FAILURE, nullptr, nullptr, kLogSource, 746, "HandleCameraSnapshot",
             "Get camera capability failed.\n");
    return false;
  }
  if (!HasChannel(capability.GetChannelList(), snapshot.channel)) snapshot.channel = capability.GetDefaultChannel();
  return true;
}

/// The model's preferred snapshot setting for the codec, or "" when the model knows none.
std::string ChooseSetting(DeviceAPIHandler& api, CamCapHandler& capability, std::string_view videoTypeName) {
  constexpr std::pair<std::string_view, int> kCodecNumbers[] = {
      {"MJPEG", 1},
      {"MPEG4", 2},
      {"H.264", 3},
      {"MXPEG", 5},
  };
  if (api.NeedsSourcePath()) return {};
  for (const auto& [name, number] : kCodecNumbers) {
    if (name != videoTypeName) continue;
    const std::list<std::string> settings = capability.GetListForCodec(number);
    return settings.empty() ? std::string() : settings.front();
  }
  return {};
}

bool TakeSnapshot(SnapshotRequest& snapshot, DeviceAPIHandler& api, CamCapHandler& capability, Picture& picture) {
  if (snapshot.camId != 0 && GetCamConnStatus(snapshot.camId) == CAM_CONN_STATUS_DISABLED) return false;

  const VendorAndModel camera = SplitCameraModel(snapshot.cameraModel);
  snapshot.password = ResolvePassword(snapshot.password, snapshot.camId, camera.vendor, camera.model, snapshot.channel);
  if (camera.vendor != kVendorUser && !LoadModel(snapshot, camera, capability)) return false;

  api.LoadByParam(DP_LOAD_FROM_MODEL_FILES, snapshot.host, snapshot.port, snapshot.user, snapshot.password,
                  camera.vendor, camera.model, snapshot.channel, snapshot.sourcePath);
  if (!api.IsValid()) {
    VTPrintf(LOG_TYPE_FAILURE, nullptr, nullptr, kLogSource, 770, "HandleCameraSnapshot",
             "Failed to get camera API.\n");
    return false;
  }
  const std::string setting = ChooseSetting(api, capability, snapshot.videoTypeName);
  const int result = GetSnapshot(snapshot.host, snapshot.port, snapshot.user, snapshot.password, api, setting,
                                 &picture.bytes, &picture.size, snapshot.videoTypeName, snapshot.camId);
  if (result != 0 || picture.IsEmpty()) {
    VTPrintf(LOG_TYPE_FAILURE, nullptr, nullptr, kLogSource, 792, "HandleCameraSnapshot",
             "Failed to get camera snapshot.\n");
    return false;
  }
  return true;
}

/// Replaces the picture by the default one, which may be a file of no bytes; false, with a log line, when that cannot
/// be read.
bool GetDefaultSnapshot(Picture& picture) {
  picture.Reset();
  if (ReadContentFromFileToBuf(kDefaultPicture, true, &picture.bytes, &picture.size) != 0) {
    VTPrintf(LOG_TYPE_FAILURE, nullptr, nullptr, kLogSource, 685, "GetDefaultSnapshot", "Failed to read img[%s]!\n",
             kDefaultPicture);
    return false;
  }
  return true;
}

Json::Value JsonPicture(const Picture& picture) {
  Json::Value data(Json::objectValue);
  data["contentType"] = "jpeg";
  data["img"] = HttpBase64EncodeUnsigned(picture.bytes, picture.size);
  return data;
}

/// Writes a raw HTTP answer, header lines included, as a CGI program does (RFC 3875 section 6).
void WriteRawPicture(const Picture& picture) {
  std::printf("Content-type: image/jpeg\r\nContent-length: %d\r\n\r\n", picture.size);
  if (!picture.IsEmpty()) std::fwrite(picture.bytes, static_cast<std::size_t>(picture.size), 1, stdout);
}

}  // namespace

void CameraCapHandler::HandleCameraSnapshot() {
  DeviceAPIHandler api;
  CamCapHandler capability;
  SnapshotRequest snapshot{ParameterReader(*request)};

  Picture picture;
  if (!TakeSnapshot(snapshot, api, capability, picture) && !GetDefaultSnapshot(picture)) return;
  if (snapshot.jsonResponse) {
    response->SetSuccess(JsonPicture(picture));
  } else {
    WriteRawPicture(picture);
  }
}

void CameraCapHandler::HandleCamUserDefineReso() {
  const ParameterReader read(*request);
  const int camId = read.Int("camId", 0);
  const int port = read.Int("camPort", "");
  const std::string host = read.String("camIP", "");
  const std::string user = read.String("camUser", "");
  const std::string givenPassword = read.String("camPass", "");
  const std::string vendor = read.String("vendor", "");
  const std::string model = read.String("model", "");
  const std::string channel = read.String("camChannel", "");
  const std::string sourcePath = read.String("camSourcePath", "");
  const std::string videoTypeName = read.String("camVdoType", "MJPEG");

  const std::string password = ResolvePassword(givenPassword, camId, vendor, model, channel);
  DeviceAPIHandler api;
  api.LoadByParam(DP_LOAD_FROM_MODEL_FILES, host, port, user, password, vendor, model, channel, sourcePath);
  Json::Value data;
  if (!api.IsValid()) {
    VTPrintf(LOG_TYPE_FAILURE, nullptr, nullptr, kLogSource, 534, "HandleCamUserDefineReso",
             "Failed to get camera API.\n");
    SetResponse(data);
    return;
  }

  Picture picture;
  int width = 0;
  int height = 0;
  GetSnapshot(host, port, user, password, api, "", &picture.bytes, &picture.size, videoTypeName, camId);
  GetJpegReso(picture.bytes, picture.size, &width, &height);
  if (width == 0 || height == 0) {
    SetErrorCode(WEBAPI_ERR_CAMCAP_FAILED, "", "");
  } else {
    data["userDefineReso"] = std::to_string(width) + "x" + std::to_string(height);
  }
  picture.Reset();
  SetResponse(data);
}
