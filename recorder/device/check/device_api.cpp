#include "recorder/device/check/device_api.h"

#include <utility>

#include "recorder/device/asked/camera_file.h"
#include "recorder/device/check/member_function.h"
#include "recorder/device/check/model_driver.h"
#include "recorder/device/check/unanswered_driver.h"
#include "recorder/device/check/unasked.h"
#include "recorder/device/check/user_driver.h"
#include "recorder/device/check/verify_result.h"
#include "recorder/device/check/wanted_camera.h"
#include "recorder/device/model/built_in_models.h"
#include "recorder/device/model/model_files.h"
#include "recorder/request/request_scope.h"

using recorder::Device;
using recorder::Register;

namespace recorder {
namespace {

std::unique_ptr<Device> MakeGenericDevice(const std::string& vendor, DeviceParameters parameters) {
  KnownCamera camera = LearnCamera(vendor, parameters.address, parameters.channel, Freshness::kRecent);
  if (!camera.model) {
    RequestScope::Current().SetCause(camera.outcome);
    return std::make_unique<UnansweredDevice>(camera.outcome);
  }
  parameters.channel = std::move(camera.channel);
  return std::make_unique<ModelDevice>(std::move(camera.model), std::move(parameters));
}

}  // namespace

std::unique_ptr<Device> MakeDevice(const std::string& vendor, const std::string& model, DeviceParameters parameters) {
  if (vendor == kUserVendor) return std::make_unique<UserDevice>(std::move(parameters));
  if (IsGenericVendor(vendor)) return MakeGenericDevice(vendor, std::move(parameters));
  FoundModel found = FindModel(vendor, model);
  if (!found.model) return nullptr;
  return std::make_unique<ModelDevice>(std::move(found.model), std::move(parameters));
}

}  // namespace recorder

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
  impl->device = nullptr;
  if (source == DP_LOAD_FROM_MODEL_FILES) {
    const recorder::CameraAddress camera{address, port, user, password};
    recorder::NameWantedCamera(vendor, model, camera, sourcePath);
    impl->device = recorder::MakeDevice(vendor, model, {camera, channel, sourcePath});
  }
  Device* device = impl->device.get();
  if (device == nullptr) recorder::ReportUnasked(vendor, model, recorder::Outcome::kUnknownModel);
  impl->vendor = vendor;
  impl->model = model;
  impl->lacksPath = device != nullptr && device->NeedsSourcePath() && sourcePath.empty();
  if (impl->lacksPath) recorder::RequestScope::Current().SetCause(recorder::Outcome::kNoPath);
  Register<&Device::NeedsSourcePath>(NeedsSourcePath, device, "NeedsSourcePath");
  Register<&Device::HasStreamPath>(HasStreamPath, device, "HasStreamPath");
  Register<&Device::GetStreamPath>(GetStreamPath, device, "GetStreamPath");
  Register<&Device::VerifyConnection>(VerifyConnection, device, "VerifyConnection");
  Register<&Device::SelectVideoType>(SelectVideoType, device, "SelectVideoType");
  Register<&Device::GetSnapshotPath>(GetSnapshotPath, device, "GetSnapshotPath");
  SetValid(device != nullptr);
}

int RetDevApiToRetCV(int code) { return recorder::ToVerifyResult(static_cast<recorder::Outcome>(code)); }
