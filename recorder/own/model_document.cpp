#include "recorder/own/model_document.h"

#include <map>
#include <optional>
#include <utility>

#include "recorder/device/model/model_facts.h"
#include "recorder/device/model/model_stream.h"
#include "recorder/http/own_request.h"
#include "recorder/net/camera_address.h"
#include "recorder/utility/files.h"
#include "recorder/utility/json_text.h"
#include "recorder/utility/text.h"
#include "recorder/utility/translate.h"

namespace recorder {

namespace {

constexpr std::pair<ModelOrigin, const char*> kOrigins[] = {
    {ModelOrigin::kBuiltIn, "builtIn"}, {ModelOrigin::kShipped, "shipped"}, {ModelOrigin::kOwn, "own"}};

Json::Value CountsOf(const Model& model) {
  FactCounts counts;
  CountFacts(model, counts);
  Json::Value json(Json::objectValue);
  for (const auto& [by, count] : counts) json[by.empty() ? "nobody" : std::string(by)] = Json::UInt64(count);
  return json;
}

/// False for the stream of a camera that has to be asked where it is.
bool IsKnown(const ModelStream& stream) { return !stream.from.path.empty(); }

Json::Value NamesOfStreams(const Model& model) {
  Json::Value names(Json::arrayValue);
  for (const char* name : {kMainStream, kSubStream, kThirdStream}) {
    const ModelStream* stream = FindModelStream(model, name, "");
    if (stream != nullptr && IsKnown(*stream)) names.append(name);
  }
  return names;
}

/// Adds who says it to what is said; nulls where nobody is named.
void AddSource(const ModelSource* source, Json::Value& json) {
  const ModelSource none;
  const ModelSource& said = source == nullptr ? none : *source;
  json["by"] = source == nullptr ? Json::Value() : Json::Value(std::string(NameOf(said.by)));
  json["document"] = TextOrNull(said.document);
  json["url"] = TextOrNull(said.url);
  json["page"] = TextOrNull(said.page);
  json["checked"] = TextOrNull(said.checked);
}

/// The models of a file as it has them, by name: texts need a tenth of the memory of what is read of them.
using Entries = std::map<std::string, std::string>;

Entries ReadEntries(const std::string& path) {
  std::string ignored;
  const std::optional<Json::Value> file = ParseStrictJson(ReadFile(path), ignored);
  Entries entries;
  if (!file || !file->isObject()) return entries;
  for (const Json::Value& model : (*file)["models"]) entries.emplace(model["name"].asString(), ToText(model));
  return entries;
}

/// Keeps the entries of the file that was asked for last, which may have thousands. One thread.
class LastFile {
 public:
  const Entries& Of(const std::string& path) {
    const FileStamp stamp = StampOf(path);
    if (path == path_ && stamp == stamp_) return entries_;
    path_.clear();  // as long as reading may fail
    entries_ = ReadEntries(path);
    path_ = path;
    stamp_ = stamp;
    return entries_;
  }

 private:
  std::string path_;
  FileStamp stamp_;
  Entries entries_;
};

/// The model as its file has it: a Model has what the recorder makes of it. Null when the file says it no longer.
Json::Value ReadEntry(const FoundModel& found) {
  static LastFile last;
  if (found.file.empty()) return {};
  const Entries& entries = last.Of(found.file);
  const auto entry = entries.find(found.model->name);
  std::string ignored;
  return entry == entries.end() ? Json::Value() : ParseStrictJson(entry->second, ignored).value_or(Json::Value());
}

/// What is said of the paths of streams stands with these.
bool IsOfStreams(const std::string& fact) { return fact == StreamFactName(0) || fact.starts_with("stream/"); }

Json::Value FactsOf(const FoundModel& found) {
  const Json::Value entry = ReadEntry(found);
  Json::Value facts(Json::arrayValue);
  for (const ModelFact& fact : found.model->facts) {
    const std::string name = FactName(fact);
    if (IsOfStreams(name)) continue;
    Json::Value& json = facts.append(Json::Value(Json::objectValue));
    json["fact"] = name;
    json["value"] = entry[name];
    AddSource(SourceOf(*found.model, fact), json);
  }
  return facts;
}

bool IsInTls(const ModelStream& stream, std::optional<int> port) {
  return stream.from.isTls || (stream.isOverHttp && port == kHttpsPort);
}

std::string AddressOf(const ModelStream& stream, const AskedCamera& camera, const std::string& path) {
  const std::optional<int> port = stream.from.port ? stream.from.port : camera.port;
  const std::string scheme = std::string(stream.isOverHttp ? "http" : "rtsp") + (IsInTls(stream, port) ? "s" : "");
  return scheme + "://" + WithBrackets(camera.host) + (port ? ":" + std::to_string(*port) : "") + path;
}

Json::Value StreamOf(const Model& model, std::size_t index, const AskedCamera& camera) {
  const ModelStream& stream = model.streams[index];
  Json::Value json(Json::objectValue);
  json["name"] = stream.name;
  json["codec"] = stream.codec;
  json["protocol"] = stream.isOverHttp ? "HTTP" : "RTSP";
  json["port"] = stream.from.port ? Json::Value(*stream.from.port) : Json::Value();
  json["tls"] = IsInTls(stream, stream.from.port);
  json["path"] = StreamPath(stream, ChannelToAsk(model, camera.channel));
  if (!camera.host.empty()) json["address"] = AddressOf(stream, camera, json["path"].asString());
  AddSource(SourceOf(model, StreamFactName(index)), json["source"]);
  return json;
}

Json::Value StreamsOf(const Model& model, const AskedCamera& camera) {
  Json::Value streams(Json::arrayValue);
  for (std::size_t i = 0; i < model.streams.size(); ++i) {
    if (IsKnown(model.streams[i])) streams.append(StreamOf(model, i, camera));
  }
  return streams;
}

}  // namespace

Json::Value NearestJson(const std::vector<ModelName>& models, const std::string& wanted) {
  constexpr std::size_t kMostNearest = 5;
  Json::Value nearest(Json::arrayValue);
  for (const ModelName& near : NearestModels(models, wanted, kMostNearest)) {
    Json::Value& entry = nearest.append(Json::Value(Json::objectValue));
    entry["vendor"] = near.vendor;
    entry["model"] = near.model;
  }
  return nearest;
}

std::string StreamAddress(const Model& model, const ModelStream& stream, const AskedCamera& camera) {
  return AddressOf(stream, camera, StreamPath(stream, ChannelToAsk(model, camera.channel)));
}

Json::Value ModelEntry(const Model& model, ModelOrigin origin) {
  Json::Value entry(Json::objectValue);
  entry["vendor"] = model.vendor;
  entry["model"] = model.name;
  entry["origin"] = Translate(kOrigins, origin, "");
  entry["by"] = CountsOf(model);
  entry["streams"] = NamesOfStreams(model);
  return entry;
}

Json::Value ModelDocument(const FoundModel& found, const AskedCamera& camera) {
  Json::Value document(Json::objectValue);
  document["vendor"] = found.model->vendor;
  document["model"] = found.model->name;
  document["origin"] = Translate(kOrigins, found.origin, "");
  document["note"] = found.model->note;
  document["anyChannel"] = found.model->hasOtherChannels;
  document["facts"] = FactsOf(found);
  document["streams"] = StreamsOf(*found.model, camera);
  return document;
}

}  // namespace recorder
