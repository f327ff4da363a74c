#include "recorder/host/stored_call.h"

#include <stdexcept>

namespace recorder {

namespace {

Json::Value ParamsOf(const CameraRecord& camera) {
  Json::Value params(Json::objectValue);
  params["camId"] = camera.id;
  params["camIP"] = camera.host;
  params["camPort"] = camera.port;
  params["camUserName"] = camera.user;
  for (const char* name : {"camPassWord", "camPassword"}) params[name] = gszFakePass;
  params["camModel"] = camera.vendor + " " + camera.model;
  params["camChannel"] = camera.channel;
  params["camSourcePath"] = camera.sourcePath;
  return params;
}

}  // namespace

ApiCall StoredCall(const ModuleLibrary& module, const std::string& method, const CameraRecord& camera) {
  ApiCall call;
  call.method = module.Find(method);
  if (call.method == nullptr) throw std::runtime_error("the module has no method " + method);
  call.params = ParamsOf(camera);
  call.isAuthorized = true;  // the module asks nobody: whoever calls has looked who may
  return call;
}

}  // namespace recorder
