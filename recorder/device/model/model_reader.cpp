#include "recorder/device/model/model_reader.h"

#include <json/json.h>

#include <algorithm>
#include <optional>
#include <set>
#include <sstream>
#include <system_error>
#include <utility>
#include <valijson/adapters/jsoncpp_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validation_results.hpp>
#include <valijson/validator.hpp>

#include "recorder/device/model/model_checker.h"
#include "recorder/device/model/model_json.h"
#include "recorder/utility/files.h"
#include "recorder/utility/json_text.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

using Mistakes = std::vector<PlacedMistake>;

// --- Text to JSON ---------------------------------------------------------------------------------------------------

/// A pair of lines of the report is a mistake; a report of another kind is one as a whole.
Mistakes SyntaxMistakes(const std::string& report) {
  Mistakes mistakes;
  std::istringstream lines(report);
  for (std::string place, text; std::getline(lines, place) && std::getline(lines, text);) {
    mistakes.push_back({place.substr(std::min<std::size_t>(2, place.size())),
                        text.substr(std::min(text.size(), text.find_first_not_of(' ')))});
  }
  if (mistakes.empty()) mistakes.push_back({"", report});
  return mistakes;
}

/// Nothing, and at least one mistake, when `text` is no JSON.
std::optional<Json::Value> ReadJson(const std::string& text, Mistakes& mistakes) {
  std::string report;
  std::optional<Json::Value> json = ParseStrictJson(text, report);
  if (!json) mistakes = SyntaxMistakes(report);
  return json;
}

/// Nothing, and a mistake, when the file at `path` cannot be read.
std::optional<std::string> ReadWholeFile(const std::string& path, Mistakes& mistakes) try {
  return ReadFile(path);
} catch (const std::system_error& error) {
  mistakes = {{"", "The file cannot be read: " + error.code().message() + "."}};
  return std::nullopt;
}

// --- Schema ---------------------------------------------------------------------------------------------------------

/// Valijson's context is {"<root>", "[models]", "[0]", "[name]"}.
std::string JsonPointer(const std::vector<std::string>& context) {
  std::string pointer;
  for (std::size_t i = 1; i < context.size(); ++i) {
    pointer += "/" + context[i].substr(1, context[i].size() - 2);
  }
  return pointer;
}

/// Valijson repeats each mistake for every level above it; only the innermost names the cause.
bool IsRepetition(const std::string& description) {
  return description.starts_with("Failed to validate against schema associated with") ||
         description.starts_with("Failed to validate item #") ||
         description == "Failed to validate against additional properties schema";
}

Mistakes CheckSchema(const valijson::Schema& schema, const Json::Value& json) {
  valijson::ValidationResults results;
  thread_local valijson::Validator validator;  // keeps what it has made of the schema's patterns, which takes long
  const valijson::adapters::JsonCppAdapter adapter(json);
  if (validator.validate(schema, adapter, &results)) return {};
  Mistakes mistakes;
  for (const auto& error : results) {
    if (!IsRepetition(error.description)) mistakes.push_back({JsonPointer(error.context), error.description});
  }
  if (mistakes.empty()) mistakes.push_back({"", "The file does not follow the schema."});
  return mistakes;
}

// --- The whole file -------------------------------------------------------------------------------------------------

void CheckVendor(const std::string& vendor, Mistakes& mistakes) {
  if (vendor.find(' ') != std::string::npos) {
    mistakes.push_back({"/vendor", "A vendor name holds no blank: clients send vendor and model as one text."});
  }
  const bool isPlain = vendor.find('/') == std::string::npos && !HoldsControls(vendor);
  if (!isPlain) mistakes.push_back({"/vendor", "A vendor name holds no slash and no control character."});
}

void ReadModels(const Json::Value& json, VendorModels& vendor, Mistakes& mistakes) {
  CheckVendor(vendor.vendor, mistakes);
  if (!json.isMember("source") && json["sources"].empty()) mistakes.push_back({"", "The file names no source."});
  const ModelSources sources = ReadSources(json["sources"]);
  std::set<std::string> names;
  vendor.models.reserve(json["models"].size());
  for (Json::ArrayIndex i = 0; i < json["models"].size(); ++i) {
    const Json::Value& entry = json["models"][i];
    const std::string place = "/models/" + std::to_string(i);
    Model model = ModelOfJson(vendor.vendor, entry, sources);
    if (!names.insert(model.name).second) mistakes.push_back({place + "/name", "A model of this name stands above."});
    CheckModel(entry, model, place, mistakes);
    vendor.models.push_back(std::move(model));
  }
}

}  // namespace

struct ModelReader::Schema {
  valijson::Schema schema;
};

ModelReader::ModelReader(const std::string& schemaFile) {
  Mistakes mistakes;
  const std::optional<std::string> text = ReadWholeFile(schemaFile, mistakes);
  const std::optional<Json::Value> json = text ? ReadJson(*text, mistakes) : std::nullopt;
  if (!json) {
    schemaMistake_ = "No usable schema at " + schemaFile + ": " + mistakes.front().text;
    return;
  }
  auto schema = std::make_unique<Schema>();
  try {
    valijson::SchemaParser().populateSchema(valijson::adapters::JsonCppAdapter(*json), schema->schema);
    schema_ = std::move(schema);
  } catch (const std::runtime_error& error) {
    schemaMistake_ = "No usable schema at " + schemaFile + ": " + error.what();
  }
}

ModelReader::~ModelReader() = default;

std::unique_ptr<VendorModels> ModelReader::Read(const std::string& path, std::vector<ModelMistake>& mistakes) const {
  Mistakes own;
  const std::optional<std::string> text = ReadWholeFile(path, own);
  if (text) return ReadText(*text, path, mistakes);
  for (PlacedMistake& mistake : own) mistakes.push_back({path, std::move(mistake.place), std::move(mistake.text)});
  return nullptr;
}

std::unique_ptr<VendorModels> ModelReader::ReadText(const std::string& text, const std::string& path,
                                                    std::vector<ModelMistake>& mistakes) const {
  auto vendor = std::make_unique<VendorModels>();
  Mistakes own;
  if (!schema_) own.push_back({"", schemaMistake_});
  const std::optional<Json::Value> json = schema_ ? ReadJson(text, own) : std::nullopt;
  if (json) own = CheckSchema(schema_->schema, *json);
  if (own.empty()) {
    vendor->vendor = (*json)["vendor"].asString();
    vendor->file = path;
    ReadModels(*json, *vendor, own);
  }
  for (PlacedMistake& mistake : own) mistakes.push_back({path, std::move(mistake.place), std::move(mistake.text)});
  return own.empty() ? std::move(vendor) : nullptr;
}

}  // namespace recorder
