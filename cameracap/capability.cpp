#include <cstring>
#include <string>
#include <utility>

#include "cameracap/cameracap.h"
#include "cameracap/parameters.h"
#include "platform/device.h"
#include "platform/utility.h"

namespace {

Json::Value VideoCapability(const char* codec, const char* streamType) {
  Json::Value entry(Json::objectValue);
  entry["vt"] = codec;
  entry["stList"].append(streamType);
  return entry;
}

/// The capability object of a camera that the user describes: nothing is known of it but how it may be reached.
Json::Value UserDefinedCapability() {
  const Json::Value emptyList(Json::arrayValue);
  Json::Value capability(Json::objectValue);
  capability["id"] = "User Define";
  capability["VideoSvr"] = false;
  capability["ChanlList"] = emptyList;
  capability["defChanl"] = "1";
  capability["cntChanl"] = 1;
  capability["MDCap"] = false;
  capability["DINum"] = 0;
  capability["multiDI"] = false;
  capability["setDICap"] = false;
  capability["resIndCap"] = false;
  capability["fpsIndCap"] = false;
  capability["qualIndCap"] = false;
  capability["defFPS"] = "";
  capability["defReso"] = "";
  capability["defQual"] = "";
  capability["cntFPS"] = 0;
  capability["cntRes"] = 0;
  capability["cntQual"] = 0;
  capability["videoCap"] = 1;
  capability["videoCapList"].append(VideoCapability("MJPEG", "HTTP"));
  capability["videoCapList"].append(VideoCapability("H.264", "RTSP"));
  capability["videoCapList"].append(VideoCapability("MPEG4", "RTSP"));
  capability["FPSList"] = emptyList;
  capability["ResoList"] = emptyList;
  capability["QualList"] = emptyList;
  capability["audioCap"] = false;
  capability["AudioCHList"] = emptyList;
  capability["MDList"] = emptyList;
  capability["singleStream"] = true;
  capability["defUser"] = "";
  capability["defPass"] = "";
  capability["fisheyeType"] = 0;
  capability["stmFisheyeType"] = 0;
  capability["defRtspProtocol"] = static_cast<int>(RTSP_PROTOCOL_AUTO);
  capability["rtspProtocolCap"] = 1U << RTSP_PROTOCOL_UDP | 1U << RTSP_PROTOCOL_TCP | 1U << RTSP_PROTOCOL_HTTP;
  capability["defCodecOptimization"] = 1;
  capability["defRtspKeepAlive"] = 1;
  capability["codecOptimizationCap"] = 0U;
  capability["streamCnt"] = 0;
  capability["hasEdgeStg"] = false;
  return capability;
}

/// Success data of both capability queries.
Json::Value CapabilityDocument(Json::Value capability) {
  Json::Value data(Json::objectValue);
  data["camCap"].append(std::move(capability));
  return data;
}

Json::Value ReadCapability(const std::string& vendor, const std::string& model, CamCapHandler& handler) {
  Json::Value capability(Json::objectValue);
  GetCamCap(vendor, model, handler, capability);
  return capability;
}

VT_WEBAPI_ERR_CODE FetchErrorCode(int fetchResult) {
  constexpr std::pair<int, VT_WEBAPI_ERR_CODE> kErrorCodes[] = {
      {CAMCAP_FILE_SUBSTITUTED, WEBAPI_ERR_CAMCAP_SUBSTITUTED},
      {CAMCAP_FILE_UNREACHABLE, WEBAPI_ERR_CAMCAP_UNREACHABLE},
      {CAMCAP_FILE_NO_SERVICE, WEBAPI_ERR_CAMCAP_NO_SERVICE},
      {CAMCAP_FILE_LOGIN_REFUSED, WEBAPI_ERR_CAMCAP_LOGIN_REFUSED},
  };
  for (const auto& [result, code] : kErrorCodes) {
    if (result == fetchResult) return code;
  }
  return WEBAPI_ERR_CAMCAP_FAILED;
}

/// A "PSIA" camera lists its own channels; one that it does not have is replaced by its default one, with another load.
bool ReplaceUnknownChannel(CamCapHandler& handler, const CamProfile& profile, const std::string& capFilePath) {
  if (HasChannel(handler.GetChannelList(), profile.channel)) return true;
  return handler.LoadCapability(DP_LOAD_FROM_MODEL_FILES, profile.vendor, profile.model, handler.GetDefaultChannel(),
                                capFilePath) == 0;
}

/// Loads what the file that is kept for the camera says.
bool LoadKeptCapability(CamCapHandler& handler, const CamProfile& profile, const std::string& capFilePath) {
  return handler.LoadCapability(DP_LOAD_FROM_MODEL_FILES, profile.vendor, profile.model, profile.channel,
                                capFilePath) == 0;
}

/// The same of the file that asking the camera has left.
bool LoadAskedCapability(CamCapHandler& handler, const CamProfile& profile, const std::string& capFilePath) {
  if (!LoadKeptCapability(handler, profile, capFilePath)) return false;
  return profile.vendor != kVendorPsia || ReplaceUnknownChannel(handler, profile, capFilePath);
}

}  // namespace

void CameraCapHandler::HandleCameraModelEnum() {
  Json::Value models(Json::arrayValue);
  Json::Value data;
  data["success"] = GetCamModelEnumInfo(models);
  data["cameraModel"] = models;
  response->SetSuccess(data);
}

void CameraCapHandler::HandleEnumExistedCamCap() {
  Json::Value capabilities(Json::arrayValue);
  Json::Value data;
  if (EnumExistedCameraCap(capabilities)) {
    data["camCap"] = capabilities;
  } else {
    SetErrorCode(WEBAPI_ERR_OPERATION_FAILED, "", "");
  }
  SetResponse(data);
}

void CameraCapHandler::HandleCamCap() {
  const ParameterReader read(*request);
  const std::string vendor = read.String("vendor", "");
  const std::string model = read.String("model", "");
  const std::string channel = read.String("channel", "0");

  CamCapHandler handler;
  Json::Value data(Json::objectValue);
  if (vendor == kVendorUser) {
    data = CapabilityDocument(UserDefinedCapability());
  } else if (handler.LoadCapability(DP_LOAD_FROM_MODEL_FILES, vendor, model, channel, "") == 0) {
    data = CapabilityDocument(ReadCapability(vendor, model, handler));
  } else {
    SetErrorCode(WEBAPI_ERR_OPERATION_FAILED, "", "");
    VTPrintf(LOG_TYPE_FAILURE, nullptr, nullptr, kLogSource, 395, "HandleCamCap", "Failed to get camera cap.\n");
  }
  SetResponse(data);
}

void CameraCapHandler::HandleCamCapRemote() {
  const ParameterReader read(*request);
  CamProfile profile;
  const int camId = read.Int("camId", 0);
  profile.port = read.Int("camPort", "");
  profile.ip = read.String("camIP", "");
  profile.user = read.String("camUser", "");
  profile.pass = read.String("camPass", "");
  profile.vendor = read.String("vendor", "");
  profile.model = read.String("model", "");
  profile.channel = read.String("camChannel", "");
  const auto command = static_cast<__tag_REMOTE_CAMCAP_CMD>(read.Int("camCapCmd", ""));

  CamCapHandler handler;
  if (std::strcmp(profile.pass.c_str(), gszFakePass) == 0) {  // the other methods compare what follows a NUL too
    profile.pass = GetCamRealPass(camId, profile.vendor, profile.model, profile.channel);
  }

  std::string capFilePath;
  bool hasFile = true;
  if (command == REMOTE_CAMCAP_KEPT) {
    capFilePath = GetRealCapFilePath(profile.vendor, profile.ip, profile.port, "");
  } else {
    CamProfile asked = profile;  // what the lookup makes of it does not count afterwards
    const int result = CamCapUtils::GetCamCapFile(asked, capFilePath, command);
    if (result != CAMCAP_FILE_OBTAINED) SetErrorCode(FetchErrorCode(result), "", "");
    hasFile = result == CAMCAP_FILE_OBTAINED || result == CAMCAP_FILE_SUBSTITUTED;
  }

  Json::Value data(Json::objectValue);
  if (hasFile) {
    const auto load = command == REMOTE_CAMCAP_KEPT ? LoadKeptCapability : LoadAskedCapability;
    if (load(handler, profile, capFilePath)) {
      data = CapabilityDocument(ReadCapability(profile.vendor, profile.model, handler));
    } else {
      SetErrorCode(WEBAPI_ERR_OPERATION_FAILED, "", "");
    }
  }
  SetResponse(data);
}
