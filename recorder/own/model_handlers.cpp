#include "recorder/device/model/built_in_models.h"
#include "recorder/device/model/model_files.h"
#include "recorder/own/handlers.h"

namespace recorder {

namespace {

Json::Value Entry(const Model& model) {
  Json::Value entry(Json::objectValue);
  entry["vendor"] = model.vendor;
  entry["model"] = model.name;
  return entry;
}

}  // namespace

OwnAnswer ListModels(const OwnRequest& /*request*/, LineAnswer& /*lines*/) {
  Json::Value data(Json::objectValue);
  Json::Value& list = data["models"] = Json::Value(Json::arrayValue);
  for (const VendorModels& vendor : Models()->vendors) {
    for (const Model& model : vendor.models) list.append(Entry(model));
  }
  for (const auto& model : BuiltInModels()) list.append(Entry(*model));
  return Success(data);
}

}  // namespace recorder
