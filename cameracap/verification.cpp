#include <pthread.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "cameracap/cameracap.h"
#include "cameracap/parameters.h"
#include "platform/device.h"
#include "platform/utility.h"

namespace {

// --- What the test of one camera and of a list share ---

VT_WEBAPI_ERR_CODE VerifyErrorCode(int verifyResult) {
  constexpr std::pair<int, VT_WEBAPI_ERR_CODE> kErrorCodes[] = {
      {CAMERA_VERIFY_UNREACHABLE, WEBAPI_ERR_CAMERA_UNREACHABLE},
      {CAMERA_VERIFY_TIMED_OUT, WEBAPI_ERR_CAMERA_TIMED_OUT},
      {CAMERA_VERIFY_LOGIN_REFUSED, WEBAPI_ERR_CAMERA_LOGIN_REFUSED},
      {CAMERA_VERIFY_NO_SUCH_STREAM, WEBAPI_ERR_CAMERA_NO_SUCH_STREAM},
      {CAMERA_VERIFY_NO_VIDEO, WEBAPI_ERR_CAMERA_NO_VIDEO},
      {CAMERA_VERIFY_BUSY, WEBAPI_ERR_CAMERA_BUSY},
  };
  for (const auto& [result, code] : kErrorCodes) {
    if (result == verifyResult) return code;
  }
  return WEBAPI_ERR_CAMERA_TEST_FAILED;
}

/// Obtains the capability file of a camera that is being added. The result is a CAMERA_VERIFY_RESULT.
int FetchCapabilityFile(CamProfile& profile, std::string& capFilePath) {
  switch (CamCapUtils::GetCamCapFile(profile, capFilePath, REMOTE_CAMCAP_AS_NEEDED)) {
    case CAMCAP_FILE_OBTAINED:
    case CAMCAP_FILE_SUBSTITUTED:
      return CAMERA_VERIFY_PASSED;
    case CAMCAP_FILE_LOGIN_REFUSED:
      return CAMERA_VERIFY_LOGIN_REFUSED;
    default:
      return CAMERA_VERIFY_NOT_PREPARED;
  }
}

// --- One camera ---

struct CameraTestRequest {
  explicit CameraTestRequest(const ParameterReader& read)
      : videoTypeName(read.String("camVideoType")),
        streamingTypeName(read.String("camStreamingType")),
        camId(read.Int("camId")),
        port(read.Int("camPort")),
        address(read.String("camIP")),
        user(read.String("camUserName")),
        password(read.String("camPassWord")),
        cameraModel(read.String("camModel")),
        channel(read.String("camChannel")),
        sourcePath(read.String("camSourcePath")) {}

  std::string videoTypeName;
  std::string streamingTypeName;
  int camId;
  int port;
  std::string address;
  std::string user;
  std::string password;
  std::string cameraModel;
  std::string channel;
  std::string sourcePath;
};

/// Asks a camera of a generic protocol what it can do, and replaces a channel that a "PSIA" camera does not have. The
/// result is a CAMERA_VERIFY_RESULT.
int PrepareGenericCamera(CameraTestRequest& test, const VendorAndModel& camera, CamCapHandler& capability) {
  CamProfile profile{.ip = test.address,
                     .user = test.user,
                     .pass = test.password,
                     .channel = test.channel,
                     .vendor = camera.vendor,
                     .model = camera.model,
                     .port = test.port};
  std::string capFilePath;
  const int result = FetchCapabilityFile(profile, capFilePath);
  if (result != CAMERA_VERIFY_PASSED || camera.vendor != kVendorPsia) return result;

  if (capability.LoadCapability(DP_LOAD_FROM_MODEL_FILES, camera.vendor, camera.model, test.channel, capFilePath) !=
      0) {
    VTPrintf(LOG_TYPE_FAILURE, nullptr, nullptr, kLogSource, 618, "HandleCameraTest",
             "Get camera capability failed.\n");
    return CAMERA_VERIFY_NOT_PREPARED;
  }
  if (!HasChannel(capability.GetChannelList(), test.channel)) test.channel = capability.GetDefaultChannel();
  return CAMERA_VERIFY_PASSED;
}

/// Checks a camera whose device API is loaded in the first of three ways that fits: by the path that the user gave, by
/// the path that the device API names, by the device API's own check.
int CheckCamera(DeviceAPIHandler& api, CameraTestRequest& test, int videoType, int streamingType) {
  if (!api.NeedsSourcePath()) {
    if (!api.HasStreamPath()) return RetDevApiToRetCV(api.VerifyConnection());
    if (api.GetStreamPath(test.sourcePath, test.port) != 0) return CAMERA_VERIFY_NOT_PREPARED;
  }
  return CameraVerify(test.address, test.port, test.user, test.password, test.sourcePath, videoType, streamingType,
                      RTSP_PROTOCOL_AUTO)
      .Verify();
}

int TestCamera(CameraTestRequest& test, DeviceAPIHandler& api, CamCapHandler& capability) {
  const int videoType = GetVideoType(test.videoTypeName);
  const int streamingType = GetStreamingType(test.streamingTypeName);
  const VendorAndModel camera = SplitCameraModel(test.cameraModel);
  test.password = ResolvePassword(test.password, test.camId, camera.vendor, camera.model, test.channel);

  if (IsGenericApi(camera.vendor, camera.model)) {
    const int result = PrepareGenericCamera(test, camera, capability);
    if (result != CAMERA_VERIFY_PASSED) return result;
  }
  api.LoadByParam(DP_LOAD_FROM_MODEL_FILES, test.address, test.port, test.user, test.password, camera.vendor,
                  camera.model, test.channel, test.sourcePath);
  if (!api.IsValid()) return CAMERA_VERIFY_NOT_PREPARED;
  return CheckCamera(api, test, videoType, streamingType);
}

// --- A list of cameras ---

/// One camera of a list. While its worker runs, the record is the worker's alone.
struct CamBatAddVerifyInfo {
  pthread_t threadId = {};
  bool skip = false;  ///< passes untested
  std::int32_t port = 0;
  std::string tmpId;
  std::string name;
  std::string address;
  std::string user;
  std::string password;
  std::string vendor;
  std::string model;
  std::int32_t result = CAMERA_VERIFY_PASSED;
};

/// A row of the list on its way from request to answer.
struct BatchRow {
  enum class State {
    kUnreadable,  ///< failed without a worker
    kReady,       ///< to be checked
    kRunning,     ///< its worker was started and not joined
    kDone,        ///< checked
    kDropped,     ///< no worker could be started or joined: gets no entry
  };
  std::unique_ptr<CamBatAddVerifyInfo> info;
  State state = State::kUnreadable;
};

constexpr std::size_t kMaxWorkers = 10;
constexpr int kUnnamedCamera = 0;  // a row names no stored camera

std::string TextOrEmpty(const Json::Value& value) {
  return value.isConvertibleTo(Json::stringValue) ? value.asString() : std::string();
}

bool IsReadable(const Json::Value& item) {
  for (const char* key : {"tmpId", "name", "ip", "username", "vendor", "model", "password", "isAuth"}) {
    if (!item[key].isConvertibleTo(Json::stringValue)) return false;
  }
  return item["port"].isConvertibleTo(Json::intValue);
}

BatchRow ReadRow(const Json::Value& item) {
  BatchRow row{.info = std::make_unique<CamBatAddVerifyInfo>()};
  CamBatAddVerifyInfo& info = *row.info;
  const bool isObject = item.isObject();
  if (!isObject || !IsReadable(item)) {
    info.tmpId = isObject ? TextOrEmpty(item["tmpId"]) : "";
    info.name = isObject ? TextOrEmpty(item["name"]) : "";
    info.result = CAMERA_VERIFY_NOT_PREPARED;
    return row;
  }
  row.state = BatchRow::State::kReady;
  info.tmpId = item["tmpId"].asString();
  info.name = item["name"].asString();
  info.port = item["port"].asInt();
  info.address = item["ip"].asString();
  info.user = item["username"].asString();
  info.vendor = item["vendor"].asString();
  info.model = item["model"].asString();
  info.password = item["password"].asString();
  info.skip = item["isAuth"].asString() == "true";
  return row;
}

std::vector<BatchRow> ReadRows(const Json::Value& camList) {
  std::vector<BatchRow> rows;
  if (!camList.isArray()) return rows;
  rows.reserve(camList.size());
  for (const Json::Value& item : camList) rows.push_back(ReadRow(item));
  return rows;
}

void StartWorker(BatchRow& row) {
  if (pthread_create(&row.info->threadId, nullptr, CameraCapHandler::CamBatAddVerifyThread, row.info.get()) == 0) {
    row.state = BatchRow::State::kRunning;
    return;
  }
  VTPrintf(LOG_TYPE_FAILURE, nullptr, nullptr, kLogSource, 855, "HandleCamBatchAddVerify", "Failed to create thread\n");
  row.info.reset();
  row.state = BatchRow::State::kDropped;
}

/// Waits for a worker. When that fails the worker may still be running, so its record is kept for ever.
void JoinWorker(BatchRow& row) {
  if (pthread_join(row.info->threadId, nullptr) == 0) {
    row.state = BatchRow::State::kDone;
    return;
  }
  VTPrintf(LOG_TYPE_FAILURE, nullptr, nullptr, kLogSource, 872, "HandleCamBatchAddVerify",
           "Failed to join thread %d. (errno=%d)\n", static_cast<int>(row.info->threadId), errno);
  static_cast<void>(row.info.release());
  row.state = BatchRow::State::kDropped;
}

Json::Value ResultEntry(const CamBatAddVerifyInfo& info) {
  Json::Value entry(Json::objectValue);
  entry["tmpId"] = info.tmpId;
  entry["name"] = info.name;
  entry["result"] = info.result;
  if (info.result != CAMERA_VERIFY_PASSED) entry["errinfo"]["code"] = VerifyErrorCode(info.result);
  return entry;
}

/// The rows of a list. Workers run in groups of at most kMaxWorkers; an exception waits for those that run.
class Batch {
 public:
  explicit Batch(std::vector<BatchRow> allRows) : rows(std::move(allRows)) {}
  ~Batch() { JoinGroup(); }
  Batch(const Batch&) = delete;
  Batch& operator=(const Batch&) = delete;

  /// Checks all rows and appends their entries to `resultList`, in list order.
  void Run(Json::Value& resultList) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
      groupEnd = i + 1;
      if (rows[i].state == BatchRow::State::kReady) StartWorker(rows[i]);
      groupSize += rows[i].state == BatchRow::State::kRunning ? 1 : 0;
      if (groupSize == kMaxWorkers || groupEnd == rows.size()) ReportGroup(resultList);
    }
  }

 private:
  /// Joins the group's workers in start order.
  void JoinGroup() {
    for (std::size_t i = groupBegin; i < groupEnd; ++i) {
      if (rows[i].state == BatchRow::State::kRunning) JoinWorker(rows[i]);
    }
  }

  void ReportGroup(Json::Value& resultList) {
    JoinGroup();
    for (; groupBegin < groupEnd; ++groupBegin) {
      BatchRow& row = rows[groupBegin];
      if (row.state != BatchRow::State::kDropped) resultList.append(ResultEntry(*row.info));
      row.info.reset();
    }
    groupSize = 0;
  }

  std::vector<BatchRow> rows;
  std::size_t groupBegin = 0;  // the group is [groupBegin, groupEnd), unreadable rows among them included
  std::size_t groupEnd = 0;
  std::size_t groupSize = 0;  // workers of the group
};

/// The check of one camera of a list: like the test of one camera, with channel and types from the model's capability.
int VerifyListedCamera(CamBatAddVerifyInfo& info, DeviceAPIHandler& api, CamCapHandler& capability) {
  if (info.skip) return CAMERA_VERIFY_PASSED;
  if (capability.LoadCapability(DP_LOAD_FROM_MODEL_FILES, info.vendor, info.model, "1", "") != 0) {
    return CAMERA_VERIFY_NOT_PREPARED;
  }
  const std::string channel = capability.GetDefaultChannel();
  info.password = ResolvePassword(info.password, kUnnamedCamera, info.vendor, info.model, channel);

  if (info.vendor == kVendorOnvif) {
    CamProfile profile{.ip = info.address,
                       .user = info.user,
                       .pass = info.password,
                       .channel = channel,
                       .vendor = info.vendor,
                       .model = info.model,
                       .port = info.port};
    std::string capFilePath;
    const int result = FetchCapabilityFile(profile, capFilePath);
    if (result != CAMERA_VERIFY_PASSED) return result;
  }

  api.LoadByParam(DP_LOAD_FROM_MODEL_FILES, info.address, info.port, info.user, info.password, info.vendor, info.model,
                  channel, "");
  if (!api.IsValid()) return CAMERA_VERIFY_NOT_PREPARED;
  if (api.NeedsSourcePath()) return CAMERA_VERIFY_NOT_PREPARED;  // a list carries no source paths
  if (!api.HasStreamPath()) return RetDevApiToRetCV(api.VerifyConnection());

  std::string path;
  int port = info.port;
  if (api.GetStreamPath(path, port) != 0) return CAMERA_VERIFY_NOT_PREPARED;
  const int videoType = capability.GetDefaultVideoType();
  const int streamingType = capability.GetStreamingTypeFor(videoType);
  return CameraVerify(info.address, port, info.user, info.password, path, videoType, streamingType, RTSP_PROTOCOL_AUTO)
      .Verify();
}

}  // namespace

void CameraCapHandler::HandleCameraTest() {
  CamCapHandler capability;
  DeviceAPIHandler api;
  CameraTestRequest test{ParameterReader(*request)};

  const int result = TestCamera(test, api, capability);
  Json::Value data;
  data["result"] = result;
  if (result != CAMERA_VERIFY_PASSED) SetErrorCode(VerifyErrorCode(result), "", "");
  SetResponse(data);
}

void CameraCapHandler::HandleCamBatchAddVerify() {
  std::vector<BatchRow> rows = ReadRows(request->GetParam("camList", Json::Value()));
  Json::Value data;
  if (rows.empty()) {
    VTPrintf(LOG_TYPE_FAILURE, nullptr, nullptr, kLogSource, 832, "HandleCamBatchAddVerify",
             "Failed to parse cam list.\n");
    SetErrorCode(WEBAPI_ERR_OPERATION_FAILED, "", "");
    SetResponse(data);
    return;
  }

  Json::Value resultList(Json::arrayValue);
  Batch(std::move(rows)).Run(resultList);
  data["resultList"] = resultList;
  SetResponse(data);
}

void* CameraCapHandler::CamBatAddVerifyThread(void* argument) {
  auto* info = static_cast<CamBatAddVerifyInfo*>(argument);
  DeviceAPIHandler api;
  CamCapHandler capability;
  info->result = VerifyListedCamera(*info, api, capability);
  return nullptr;
}
