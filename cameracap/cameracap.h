#pragma once

#include <cstdint>

#include "platform/webapi.h"
#include "webapi/vtwebapihandler.h"

/// One row of the API table. The framework reads rows by place: four fields of pointer or 32-bit size.
struct APIEntry {
  const char* apiName;
  std::int32_t version;
  const char* methodName;
  void (*handler)(NORV::APIRequest*, NORV::APIResponse*);
};
static_assert(sizeof(void*) != 4 || sizeof(APIEntry) == 16, "the framework reads rows of 16 bytes");

/// The methods of this module, ended by a row of zeros.
extern APIEntry gTable[9];

/// First row of gTable. Any thread, any number of times.
extern "C" APIEntry* GetAPITable();

/// Serves one request: answers through `response`, or leaves it untouched when the method is not one of ours. One
/// picture method may write a raw HTTP answer to standard output instead. Neither pointer is kept. Exceptions pass
/// through. Any thread; calls share nothing.
void HandleProcess(NORV::APIRequest* request, NORV::APIResponse* response);

class CameraCapHandler;
// Named in the types of the relay hooks alone: this module has no such hook.
class CmsRelayParams;
class CmsRelayTarget;

using CameraCapHandlerBase =
    VTWebAPIHandler<CameraCapHandler, int (CameraCapHandler::*)(CmsRelayParams&, CmsRelayTarget&, Json::Value&),
                    int (CameraCapHandler::*)(CmsRelayParams&),
                    int (CameraCapHandler::*)(CmsRelayParams&, CmsRelayTarget&, bool)>;

/// Serves one request of the API. Each Handle method is one API method: from its parameters to its one answer.
class CameraCapHandler : public CameraCapHandlerBase {
 public:
  using CameraCapHandlerBase::CameraCapHandlerBase;

  /// Admits the caller or answers error 105, then runs the method that the request names.
  void HandleProcess();

  // The lists and documents (capability.cpp).
  void HandleCameraModelEnum();
  void HandleEnumExistedCamCap();
  void HandleCamCap();
  void HandleCamCapRemote();

  // Checking cameras (verification.cpp).
  void HandleCameraTest();
  void HandleCamBatchAddVerify();
  /// Thread body: checks the camera whose record `argument` points to, leaves the result there and returns null.
  static void* CamBatAddVerifyThread(void* argument);

  // Pictures (snapshot.cpp).
  void HandleCameraSnapshot();
  void HandleCamUserDefineReso();
};
