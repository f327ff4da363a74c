#include "recorder/host/stored_call.h"

#include <stdexcept>

namespace recorder {

Json::Value TestParams(const CameraRecord& camera, const std::string& password) {
  Json::Value params(Json::objectValue);
  params["camIP"] = camera.host;
  params["camPort"] = camera.port;
  params["camUserName"] = camera.user;
  params["camPassWord"] = password;
  params["camModel"] = camera.vendor + " " + camera.model;
  params["camChannel"] = camera.channel;
  params["camSourcePath"] = camera.sourcePath;
  return params;
}

ApiCall StoredCall(const ModuleLibrary& module, const std::string& method, const CameraRecord& camera) {
  ApiCall call;
  call.method = module.Find(method);
  if (call.method == nullptr) throw std::runtime_error("the module has no method " + method);
  call.params = TestParams(camera, gszFakePass);
  call.params["camId"] = camera.id;
  call.params["camPassword"] = gszFakePass;  // as the method for pictures spells it
  call.isAuthorized = true;                  // the module asks nobody: whoever calls has looked who may
  return call;
}

}  // namespace recorder
