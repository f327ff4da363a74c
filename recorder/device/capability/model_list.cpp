#include <exception>
#include <memory>
#include <string>

#include "platform/device.h"
#include "recorder/device/asked/camera_file.h"
#include "recorder/device/capability/capability_document.h"
#include "recorder/device/model/built_in_models.h"
#include "recorder/device/model/model_files.h"
#include "recorder/records/records.h"
#include "recorder/utility/config.h"
#include "recorder/utility/log.h"

namespace {

using recorder::CameraRecord;
using recorder::Model;

Json::Value ModelEntry(const Model& model) {
  Json::Value entry(Json::objectValue);
  entry["vendor"] = model.vendor;
  entry["model"] = model.name;
  entry["needsSourcePath"] = model.streams.empty();
  return entry;
}

/// Names the camera and what it can do; where it is and who logs in there is not for a list.
Json::Value CameraEntry(const CameraRecord& camera) {
  const std::shared_ptr<const Model> model = recorder::KnownModel(camera);
  Json::Value entry(Json::objectValue);
  entry["camId"] = camera.id;
  entry["name"] = camera.name;
  entry["vendor"] = camera.vendor;
  entry["model"] = camera.model;
  entry["channel"] = camera.channel;
  entry["camCap"] = model ? recorder::CapabilityDocument(model) : Json::Value();
  return entry;
}

}  // namespace

bool GetCamModelEnumInfo(Json::Value& models) {
  const auto catalog = recorder::Models();
  for (const recorder::VendorModels& vendor : catalog->vendors) {
    for (const Model& model : vendor.models) models.append(ModelEntry(model));
  }
  for (const auto& model : recorder::BuiltInModels()) models.append(ModelEntry(*model));
  return !catalog->vendors.empty();
}

bool EnumExistedCameraCap(Json::Value& capabilities) try {
  const recorder::Records records(recorder::GetConfig().stateFolder);
  for (const CameraRecord& camera : records.List()) capabilities.append(CameraEntry(camera));
  return true;
} catch (const std::runtime_error& error) {  // RecordsError and std::system_error
  recorder::LogFailure(std::string("Failed to list the cameras: ") + error.what());
  return false;
}
