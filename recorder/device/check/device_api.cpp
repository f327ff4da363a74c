#include "recorder/device/check/device_api.h"

#include "recorder/device/check/member_function.h"
#include "recorder/device/check/unasked.h"
#include "recorder/device/check/wanted_camera.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/cause_table.h"

using recorder::CameraDriver;
using recorder::Register;

VTHandlerBase::VTHandlerBase() = default;
VTHandlerBase::~VTHandlerBase() {}
bool VTHandlerBase::IsValid() const { return isValid; }
void VTHandlerBase::SetValid(bool valid) { isValid = valid; }

DeviceAPIHandler::DeviceAPIHandler() : impl(std::make_unique<Impl>()) {}

/// Only now it shows whether the path was wanted, and so nothing was asked: a picture over HTTP does without it.
DeviceAPIHandler::~DeviceAPIHandler() {
  const bool isUnasked = impl->lacksPath && recorder::RequestScope::Current().Cause() == recorder::Outcome::kNoPath;
  if (isUnasked) recorder::ReportUnasked(impl->vendor, impl->model, recorder::Outcome::kNoPath);
}

void DeviceAPIHandler::LoadByParam(DP_LOAD_SOURCE source, const std::string& address, int port, const std::string& user,
                                   const std::string& password, const std::string& vendor, const std::string& model,
                                   const std::string& channel, const std::string& sourcePath) {
  recorder::RequestScope::Current().WorkFor({vendor, model, address, port, user});
  impl->driver = nullptr;
  if (source == DP_LOAD_FROM_MODEL_FILES) {
    const recorder::CameraAddress camera{address, port, user, password};
    recorder::NameWantedCamera(vendor, model, camera, sourcePath);
    impl->driver = recorder::MakeDriver(vendor, model, {camera, channel, sourcePath});
  }
  CameraDriver* driver = impl->driver.get();
  if (driver == nullptr) recorder::ReportUnasked(vendor, model, recorder::Outcome::kUnknownModel);
  impl->vendor = vendor;
  impl->model = model;
  impl->lacksPath = driver != nullptr && driver->NeedsSourcePath() && sourcePath.empty();
  if (impl->lacksPath) recorder::RequestScope::Current().SetCause(recorder::Outcome::kNoPath);
  Register<&CameraDriver::NeedsSourcePath>(NeedsSourcePath, driver, "NeedsSourcePath");
  Register<&CameraDriver::HasStreamPath>(HasStreamPath, driver, "HasStreamPath");
  Register<&CameraDriver::GetStreamPath>(GetStreamPath, driver, "GetStreamPath");
  Register<&CameraDriver::VerifyConnection>(VerifyConnection, driver, "VerifyConnection");
  Register<&CameraDriver::SelectVideoType>(SelectVideoType, driver, "SelectVideoType");
  Register<&CameraDriver::GetSnapshotPath>(GetSnapshotPath, driver, "GetSnapshotPath");
  SetValid(driver != nullptr);
}

int RetDevApiToRetCV(int code) {
  using recorder::Outcome;
  return recorder::RowOf(recorder::OutcomeOfNumber(code).value_or(Outcome::kNotUnderstood)).result;
}
