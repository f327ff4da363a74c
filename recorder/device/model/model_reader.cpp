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

#include "platform/device.h"
#include "recorder/device/model/path_template.h"
#include "recorder/utility/files.h"
#include "recorder/utility/json_text.h"
#include "recorder/utility/translate.h"

namespace recorder {
namespace {

struct Mistake {
  std::string place;
  std::string text;
};
using Mistakes = std::vector<Mistake>;

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
  valijson::Validator validator;
  const valijson::adapters::JsonCppAdapter adapter(json);
  if (validator.validate(schema, adapter, &results)) return {};
  Mistakes mistakes;
  for (const auto& error : results) {
    if (!IsRepetition(error.description)) mistakes.push_back({JsonPointer(error.context), error.description});
  }
  if (mistakes.empty()) mistakes.push_back({"", "The file does not follow the schema."});
  return mistakes;
}

// --- JSON to model; the schema has made sure of all types -----------------------------------------------------------

std::vector<std::string> Texts(const Json::Value& json) {
  std::vector<std::string> texts;
  for (const Json::Value& text : json) texts.push_back(text.asString());
  return texts;
}

Choices ReadChoices(const Json::Value& json) { return {Texts(json["values"]), json["default"].asString()}; }

ModelPath ReadPath(const Json::Value& json) {
  ModelPath path{json["path"].asString(), std::nullopt};
  if (json.isMember("port")) path.port = json["port"].asInt();
  return path;
}

constexpr std::pair<std::string_view, RTSP_PROTOCOL> kRtspProtocols[] = {
    {"udp", RTSP_PROTOCOL_UDP},   {"tcp", RTSP_PROTOCOL_TCP},   {"multicast", RTSP_PROTOCOL_MULTICAST},
    {"http", RTSP_PROTOCOL_HTTP}, {"auto", RTSP_PROTOCOL_AUTO},
};

RTSP_PROTOCOL RtspProtocol(const std::string& name) { return Translate(kRtspProtocols, name, RTSP_PROTOCOL_AUTO); }

void ReadRtsp(const Json::Value& json, Model& model) {
  model.presetRtspProtocol = RtspProtocol(json.get("default", "auto").asString());
  for (const Json::Value& name : json["protocols"]) model.rtspProtocols |= 1U << RtspProtocol(name.asString());
  model.hasRtspKeepAlive = json.get("keepAlive", true).asBool();
}

void ReadCodecs(const Json::Value& json, Model& model) {
  for (const Json::Value& codec : json["codecs"]) {
    model.codecs.push_back({codec["name"].asString(), Texts(codec["streamTypes"])});
  }
  model.presetCodec = json.get("defaultCodec", model.codecs.front().name).asString();
}

void ReadCodecOptimization(const Json::Value& json, Model& model) {
  for (const Json::Value& level : json["levels"]) model.codecOptimizations |= 1U << level.asInt();
  model.presetCodecOptimization = json.get("default", 1).asInt();
}

ModelSnapshot ReadSnapshot(const Json::Value& json) {
  const std::string kind = json["kind"].asString();
  ModelSnapshot snapshot;
  snapshot.kind = kind == "stream"      ? ModelSnapshotKind::kStream
                  : kind == "http-jpeg" ? ModelSnapshotKind::kHttpJpeg
                                        : ModelSnapshotKind::kHttpMjpeg;
  snapshot.from = ReadPath(json);
  for (const std::string& codec : json["settings"].getMemberNames()) {
    snapshot.settings.push_back({codec, Texts(json["settings"][codec])});
  }
  return snapshot;
}

Model ReadModel(const std::string& vendor, const Json::Value& json) {
  Model model;
  model.vendor = vendor;
  model.name = json["name"].asString();
  model.id = json.get("id", vendor + " " + model.name).asString();
  model.isVideoServer = json["videoServer"].asBool();
  model.channels = ReadChoices(json["channels"]);
  ReadCodecs(json, model);
  model.frameRates = ReadChoices(json["frameRates"]);
  model.resolutions = ReadChoices(json["resolutions"]);
  model.qualities = ReadChoices(json["qualities"]);
  model.hasOwnFrameRates = json["frameRates"]["perStream"].asBool();
  model.hasOwnResolutions = json["resolutions"]["perStream"].asBool();
  model.hasOwnQualities = json["qualities"]["perStream"].asBool();
  model.streamCount = json.get("streams", 1).asInt();
  model.audioChannels = Texts(json["audioChannels"]);
  model.motionChannels = Texts(json["motionChannels"]);
  model.digitalInputs = json["digitalInputs"]["count"].asInt();
  model.hasSeparateInputs = json["digitalInputs"]["separate"].asBool();
  model.hasInputSettings = json["digitalInputs"]["settable"].asBool();
  ReadRtsp(json["rtsp"], model);
  ReadCodecOptimization(json["codecOptimization"], model);
  model.presetUser = json["defaultUser"].asString();
  model.fisheyeType = json["fisheye"]["lens"].asInt();
  model.streamFisheyeType = json["fisheye"]["stream"].asInt();
  model.hasEdgeStorage = json["edgeStorage"].asBool();
  if (!json["stream"]["fromUser"].asBool()) model.stream = ReadPath(json["stream"]);
  model.snapshot = ReadSnapshot(json["snapshot"]);
  model.check = json["check"].asString() == "device" ? ModelCheck::kDevice : ModelCheck::kStream;
  model.readAt = json["readings"]["stream"]["time"].asInt64();
  return model;
}

// --- What a schema cannot say ---------------------------------------------------------------------------------------

/// Checks one model; `place` is its JSON pointer.
class ModelChecker {
 public:
  ModelChecker(const Json::Value& json, const Model& model, std::string place, Mistakes& mistakes)
      : json_(json), model_(model), place_(std::move(place)), mistakes_(mistakes) {}

  void Check() {
    CheckChoices("/channels", model_.channels);
    CheckChoices("/frameRates", model_.frameRates);
    CheckChoices("/resolutions", model_.resolutions);
    CheckChoices("/qualities", model_.qualities);
    CheckCodecs();
    CheckRtsp();
    CheckStream();
    CheckSnapshot();
  }

 private:
  void Report(const std::string& place, const std::string& text) { mistakes_.push_back({place_ + place, text}); }

  void CheckChoices(const std::string& place, const Choices& choices) {
    if (choices.values.empty()) return;
    const std::set<std::string> values(choices.values.begin(), choices.values.end());
    if (values.size() != choices.values.size()) Report(place + "/values", "A value stands twice.");
    if (!values.contains(choices.preset)) Report(place + "/default", "The default is not among the values.");
  }

  bool HasCodec(const std::string& name) const { return FindCodec(name) != nullptr; }

  const ModelCodec* FindCodec(const std::string& name) const {
    const auto codec = std::find_if(model_.codecs.begin(), model_.codecs.end(),
                                    [&](const ModelCodec& candidate) { return candidate.name == name; });
    return codec == model_.codecs.end() ? nullptr : &*codec;
  }

  void CheckCodecs() {
    std::set<std::string> names;
    for (const ModelCodec& codec : model_.codecs) {
      if (!names.insert(codec.name).second) Report("/codecs", "Codec " + codec.name + " stands twice.");
    }
    if (!HasCodec(model_.presetCodec)) Report("/defaultCodec", "The default is not among the codecs.");
  }

  void CheckRtsp() {
    const bool isOffered = ((model_.rtspProtocols >> model_.presetRtspProtocol) & 1U) != 0;
    if (model_.presetRtspProtocol != RTSP_PROTOCOL_AUTO && !isOffered) {
      Report("/rtsp/default", "The default is not among the protocols.");
    }
  }

  void CheckPath(const std::string& place, const ModelPath& path, std::initializer_list<std::string_view> allowed) {
    if (const auto mistake = FindPathMistake(path.path, allowed)) Report(place + "/path", *mistake);
  }

  void CheckStream() {
    const Json::Value& stream = json_["stream"];
    if (!stream["fromUser"].asBool()) return CheckPath("/stream", *model_.stream, {"channel", "stream"});
    if (stream.isMember("path") || stream.isMember("port")) {
      Report("/stream", "A path that the user gives leaves no room for a path or port of the model.");
    }
  }

  void CheckSnapshot() {
    if (model_.snapshot.kind == ModelSnapshotKind::kStream) return CheckStreamSnapshot();
    CheckPath("/snapshot", model_.snapshot.from, {"channel", "setting"});
    const bool takesSetting = model_.snapshot.from.path.find("{setting}") != std::string::npos;
    if (takesSetting == model_.snapshot.settings.empty()) {
      Report("/snapshot/settings", "Settings and the placeholder {setting} need each other.");
    }
    for (const SnapshotSettings& settings : model_.snapshot.settings) {
      if (!HasCodec(settings.codec)) {
        Report("/snapshot/settings/" + settings.codec, "The codec is not among the codecs of the model.");
      }
    }
  }

  void CheckStreamSnapshot() {
    const Json::Value& snapshot = json_["snapshot"];
    if (snapshot.isMember("path") || snapshot.isMember("port") || snapshot.isMember("settings")) {
      Report("/snapshot", "A snapshot from the stream has no path, port or settings of its own.");
    }
    const ModelCodec* codec = FindCodec(model_.presetCodec);
    const std::string rtsp = "RTSP";
    if (codec != nullptr &&
        std::find(codec->streamTypes.begin(), codec->streamTypes.end(), rtsp) == codec->streamTypes.end()) {
      Report("/snapshot/kind", "A snapshot is taken from RTSP streams only, and the default codec has none.");
    }
    if (model_.check == ModelCheck::kDevice) Report("/check", "The device check needs a snapshot over HTTP.");
  }

  const Json::Value& json_;
  const Model& model_;
  const std::string place_;
  Mistakes& mistakes_;
};

void CheckVendor(const std::string& vendor, Mistakes& mistakes) {
  if (vendor.find(' ') != std::string::npos) {
    mistakes.push_back({"/vendor", "A vendor name holds no blank: clients send vendor and model as one text."});
  }
}

void ReadModels(const Json::Value& json, VendorModels& vendor, Mistakes& mistakes) {
  CheckVendor(vendor.vendor, mistakes);
  std::set<std::string> names;
  for (Json::ArrayIndex i = 0; i < json["models"].size(); ++i) {
    const Json::Value& entry = json["models"][i];
    const std::string place = "/models/" + std::to_string(i);
    Model model = ReadModel(vendor.vendor, entry);
    if (!names.insert(model.name).second) mistakes.push_back({place + "/name", "A model of this name stands above."});
    ModelChecker(entry, model, place, mistakes).Check();
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
  for (Mistake& mistake : own) mistakes.push_back({path, std::move(mistake.place), std::move(mistake.text)});
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
  for (Mistake& mistake : own) mistakes.push_back({path, std::move(mistake.place), std::move(mistake.text)});
  return own.empty() ? std::move(vendor) : nullptr;
}

}  // namespace recorder
