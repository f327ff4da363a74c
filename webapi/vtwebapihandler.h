#pragma once

#include <json/json.h>

#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include "platform/utility.h"
#include "platform/webapi.h"

/// Codes of an error answer. The numbers are what clients know.
enum VT_WEBAPI_ERR_CODE : std::int32_t {
  WEBAPI_ERR_NONE = 0,
  WEBAPI_ERR_NO_PERMISSION = 105,
  WEBAPI_ERR_OPERATION_FAILED = 400,

  WEBAPI_ERR_CAMCAP_FAILED =
      457,  ///< no picture size, or no capability file for a reason that is none of the next four
  WEBAPI_ERR_CAMCAP_UNREACHABLE = 458,
  WEBAPI_ERR_CAMCAP_SUBSTITUTED = 459,  ///< only an older or built-in capability file was to be had
  WEBAPI_ERR_CAMCAP_NO_SERVICE = 460,
  WEBAPI_ERR_CAMCAP_LOGIN_REFUSED = 461,

  WEBAPI_ERR_CAMERA_UNREACHABLE = 462,
  WEBAPI_ERR_CAMERA_TIMED_OUT = 463,
  WEBAPI_ERR_CAMERA_LOGIN_REFUSED = 464,
  WEBAPI_ERR_CAMERA_NO_SUCH_STREAM = 465,
  WEBAPI_ERR_CAMERA_NO_VIDEO = 466,
  WEBAPI_ERR_CAMERA_BUSY = 467,
  WEBAPI_ERR_CAMERA_TEST_FAILED = 468,  ///< any other failure of a camera test
};

/// What every web-API handler shares: the request being served, the response, and the pending error.
///
/// `Handler` is the derived class; the other arguments are the types of its hooks for requests that a central
/// management host relays. A handler is built and destroyed by the API's entry function, on its stack, for one request
/// on one thread; it is never deleted through this base, which therefore has no virtual destructor. It owns neither
/// pointer.
template <class Handler, class RelayRequest, class RelayPrepare, class RelayFinish>
class VTWebAPIHandler {
 public:
  VTWebAPIHandler(NORV::APIRequest* apiRequest, NORV::APIResponse* apiResponse)
      : request(apiRequest), response(apiResponse) {
    const bool relayedCmd = request->GetParam("relayedCmd", Json::Value(false)).asBool();
    const bool cmsHost = IsCmsHost();
    isRelayed = cmsHost && relayedCmd;
  }
  VTWebAPIHandler(const VTWebAPIHandler&) = delete;
  VTWebAPIHandler& operator=(const VTWebAPIHandler&) = delete;

  /// True when this recorder may change the settings of camera `camId`: it is the central host, or owns the camera.
  virtual bool IsCMSClosed(std::int32_t camId) {
    if (IsCmsHost() || GetCamOwnerKdId(camId) == kLocalOwnerKdId) return true;
    VTPrintf(LOG_TYPE_FAILURE, nullptr, nullptr, "webapi/vtwebapihandler", 556, "IsCMSClosed",
             "Camera[%d]: Modify detection param while CMS closed.\n", camId);
    return false;
  }

  /// Makes `code` the answer to be, in the place of any that was set before.
  void SetErrorCode(VT_WEBAPI_ERR_CODE code, std::string param1, std::string param2) {
    errorCode = code;
    errorParams[1] = std::move(param1);
    errorParams[2] = std::move(param2);
  }

  /// Answers the request: success with `data`, or the pending error. Called once, as a method's last step.
  void SetResponse(const Json::Value& data) {
    if (errorCode == WEBAPI_ERR_NONE) {
      response->SetSuccess(data);
      return;
    }
    Json::Value params(Json::objectValue);
    params["param1"] = errorParams[1];
    params["param2"] = errorParams[2];
    response->SetError(errorCode, params);
  }

 protected:
  ~VTWebAPIHandler() = default;

  NORV::APIRequest* request;
  NORV::APIResponse* response;
  bool isRelayed = false;  ///< sent by a client through this recorder as the central management host
  VT_WEBAPI_ERR_CODE errorCode = WEBAPI_ERR_NONE;
  std::map<int, std::string> errorParams;  ///< by the number in the answer's "param1" and "param2"
};
