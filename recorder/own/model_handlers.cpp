#include <algorithm>
#include <memory>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

#include "recorder/device/model/built_in_models.h"
#include "recorder/device/model/known_models.h"
#include "recorder/net/camera_address.h"
#include "recorder/own/entity_tag.h"
#include "recorder/own/handlers.h"
#include "recorder/own/model_document.h"
#include "recorder/utility/json_text.h"

namespace recorder {

namespace {

/// All models, by vendor and name.
std::vector<std::pair<const Model*, ModelOrigin>> AllModels(const ModelCatalog& catalog) {
  std::vector<std::pair<const Model*, ModelOrigin>> models;
  for (const auto& model : BuiltInModels()) models.emplace_back(model.get(), ModelOrigin::kBuiltIn);
  for (const ModelCatalog::Place place : catalog.byName) {
    models.emplace_back(&catalog.At(place), catalog.vendors[place.vendor].origin);
  }
  std::sort(models.begin(), models.end(), [](const auto& one, const auto& other) {
    return std::tie(one.first->vendor, one.first->name) < std::tie(other.first->vendor, other.first->name);
  });
  return models;
}

Json::Value ListOf(const ModelCatalog& catalog) {
  Json::Value data(Json::objectValue);
  Json::Value& list = data["models"] = Json::Value(Json::arrayValue);
  for (const auto& [model, origin] : AllModels(catalog)) list.append(ModelEntry(*model, origin));
  return data;
}

/// The entity tag of a catalog's list. It costs as much as the list, and is made once. One thread.
class ListTag {
 public:
  const std::string& Of(const std::shared_ptr<const ModelCatalog>& catalog) {
    if (catalog_.lock() != catalog) tag_ = TagOf(ToText(ListOf(*catalog)));
    catalog_ = catalog;
    return tag_;
  }

 private:
  std::weak_ptr<const ModelCatalog> catalog_;  // else two of them would be held while one is replaced
  std::string tag_;
};

/// Of a model's address, "VENDOR/MODEL", where the second may hold a slash; a vendor's model without a name may be left
/// out.
FoundModel FindByAddress(const std::string& name) {
  const std::size_t slash = std::min(name.find('/'), name.size());
  return FindModel(name.substr(0, slash), slash == name.size() ? "" : name.substr(slash + 1));
}

OwnAnswer NoSuchModel(std::string name) {
  std::replace(name.begin(), name.end(), '/', ' ');
  Json::Value json = Failure(404, "no such model is known");
  json["error"]["nearest"] = NearestJson(KnownModels(*Models()), PlainName(name));
  return {404, json};
}

std::optional<int> PortOf(const OwnRequest& request) {
  const int port = NumberOf(request, "port", 1, kLargestPort, 0);
  return port == 0 ? std::nullopt : std::optional(port);
}

}  // namespace

OwnAnswer ListModels(const OwnRequest& request, OwnTools& /*tools*/) {
  static ListTag tags;
  const auto catalog = Models();
  const std::string& tag = tags.Of(catalog);
  if (IsNoneMatch(tag, request.http.ifNoneMatch)) return {304, {}, TagLine(tag)};
  OwnAnswer answer = Success(ListOf(*catalog));
  answer.headers = TagLine(tag);
  return answer;
}

OwnAnswer ShowModel(const OwnRequest& request, OwnTools& /*tools*/) {
  const FoundModel found = FindByAddress(request.name);
  if (!found.model) return NoSuchModel(request.name);
  const auto text = [&](const char* member) { return request.params[member].asString(); };
  return Success(ModelDocument(found, {text("channel"), text("host"), PortOf(request)}));
}

}  // namespace recorder
