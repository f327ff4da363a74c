#include "recorder/device/model/own_models.h"

#include <algorithm>
#include <functional>
#include <set>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "recorder/device/model/built_in_models.h"
#include "recorder/device/model/model_facts.h"
#include "recorder/device/model/model_folder.h"
#include "recorder/device/model/path_privacy.h"
#include "recorder/net/percent.h"
#include "recorder/utility/files.h"
#include "recorder/utility/json_text.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

namespace fs = std::filesystem;

/// Of no file that is passed over, such as "schema.json".
constexpr char kOwnExtension[] = ".own.json";

// --- Sources --------------------------------------------------------------------------------------------------------

/// What the file of another recorder says of where its facts come from, of when a camera was asked, and of that camera
/// alone.
constexpr const char* kOfOthers[] = {"source", "from", "facts", "readings", "onvifMedia", "device"};

Json::Value UserSource(const std::string& document, const std::string& day) {
  Json::Value source;
  source["document"] = document;
  source["checked"] = day;
  source["by"] = std::string(NameOf(SaidBy::kUser));
  return source;
}

/// The key of `source` among `sources`, where it is put unless it is there.
std::string KeyOf(const Json::Value& source, Json::Value& sources) {
  for (int number = 1;; ++number) {
    std::string key = "import" + (number == 1 ? "" : std::to_string(number));
    if (!sources.isMember(key)) sources[key] = source;
    if (sources[key] == source) return key;
  }
}

/// But for one, where the file would name none at all.
void RemoveUnusedSources(Json::Value& file) {
  std::set<std::string> used;
  for (const Json::Value& model : file["models"]) {
    used.insert(model["from"].asString());
    for (const Json::Value& key : model["facts"]) used.insert(key.asString());
  }
  Json::Value& sources = file["sources"];
  const Json::ArrayIndex least = file.isMember("source") ? 0 : 1;
  for (const std::string& key : sources.getMemberNames()) {
    if (!used.contains(key) && sources.size() > least) sources.removeMember(key);
  }
  if (sources.empty()) file.removeMember("sources");
}

// --- Mistakes -------------------------------------------------------------------------------------------------------

/// Calls `use` with the place and text of each path of a model that follows the schema; "" for none.
template <class Use>
void ForEachPath(const Json::Value& model, Use use) {
  const Json::Value& stream = model["stream"];
  use("/stream/path", stream["path"].asString());
  for (Json::ArrayIndex i = 0; i < stream["others"].size(); ++i) {
    use("/stream/others/" + std::to_string(i) + "/path", stream["others"][i]["path"].asString());
  }
  use("/snapshot/path", model["snapshot"]["path"].asString());
}

std::vector<PlacedMistake> FindLogins(const Json::Value& model) {
  std::vector<PlacedMistake> mistakes;
  ForEachPath(model, [&](const std::string& place, const std::string& path) {
    const std::string what = FindPathLogin(path);
    if (!what.empty()) mistakes.push_back({place, "The path seems to hold " + what + "."});
  });
  return mistakes;
}

/// Mistakes in a file with one model, by their places in its entry.
std::vector<PlacedMistake> InEntry(const std::vector<ModelMistake>& mistakes) {
  constexpr std::string_view kEntry = "/models/0";
  std::vector<PlacedMistake> placed;
  placed.reserve(mistakes.size());
  for (const ModelMistake& mistake : mistakes) {
    const bool isInEntry = mistake.place.starts_with(kEntry);
    placed.push_back({isInEntry ? mistake.place.substr(kEntry.size()) : mistake.place, mistake.text});
  }
  return placed;
}

/// The name of a vendor's file, of a name in small letters; file systems have room for 255 bytes.
std::string FileName(const std::string& vendor) {
  constexpr std::size_t kLongestName = 200;
  const std::string name = PercentEncoded(vendor, kUnreservedSigns);
  const bool isLong = name.size() > kLongestName;
  return (isLong ? std::to_string(std::hash<std::string>{}(vendor)) : name) + kOwnExtension;
}

/// The first mistake of a model file, "" for none.
std::string MistakeOf(const fs::path& path, const std::string& text) {
  std::vector<ModelMistake> mistakes;
  ReadModelText(text, path.string(), mistakes);
  return mistakes.empty() ? "" : mistakes.front().place + ": " + mistakes.front().text;
}

/// Of the file at `path`, which will be read again. Throws std::runtime_error.
std::string CheckedText(const fs::path& path, const Json::Value& file) {
  std::string text = ToPrettyText(file);
  const std::string mistake = text.size() > kLargestFile ? "it would be larger than 32 MiB" : MistakeOf(path, text);
  if (!mistake.empty()) throw std::runtime_error(path.string() + " cannot be written: " + mistake);
  return text;
}

/// "" for a file that cannot be read.
std::string TextOf(const fs::path& path) try { return ReadFile(path); } catch (const std::system_error&) {
  return "";
}

}  // namespace

OwnModels::OwnModels(const ModelFolders& folders) : folder_(folders.own) {
  MakePrivateFolder(folder_);
  lock_ = LockFolder(folder_);
  ReadKnown(folders);
  ReadFiles();
}

void OwnModels::ReadKnown(const ModelFolders& folders) {
  for (const VendorModels& vendor : ReadModels(folders).vendors) {
    vendors_.emplace(LowerCase(vendor.vendor), vendor.vendor);
    for (const Model& model : vendor.models) {
      known_.emplace(std::pair(LowerCase(model.vendor), LowerCase(model.name)), vendor.file);
    }
  }
}

/// What cannot be read is no vendor's, as for the recorder.
void OwnModels::ReadFiles() {
  for (const ModelFileState& file : ListModelFolder(folder_.string())) {
    const std::string text = TextOf(file.path);
    std::string ignored;  // the mistakes of a text without a vendor are no vendor's
    std::optional<Json::Value> json = ParseStrictJson(text, ignored);
    if (!json || !json->isObject() || !(*json)["vendor"].isString()) continue;
    files_.emplace(LowerCase((*json)["vendor"].asString()), File{file.path, *json, MistakeOf(file.path, text)});
  }
}

std::string OwnModels::SpellingOf(const std::string& vendor) const {
  const auto known = vendors_.find(LowerCase(vendor));
  return known == vendors_.end() ? vendor : known->second;
}

std::vector<PlacedMistake> OwnModels::FindMistakes(const std::string& vendor, const Json::Value& model) const {
  if (BuiltInModel(vendor)) return {{"/vendor", "This vendor name is built in."}};
  Json::Value file;
  file["vendor"] = vendor;
  file["source"] = "import";
  file["models"].append(model);
  std::vector<ModelMistake> mistakes;
  const auto read = ReadModelText(ToPrettyText(file), "", mistakes);
  if (!read) return InEntry(mistakes);
  const auto known = known_.find({LowerCase(vendor), LowerCase(read->models.front().name)});
  if (known != known_.end()) return {{"/name", "This model is known already: " + known->second}};
  return FindLogins(model);
}

std::vector<PlacedMistake> OwnModels::Add(const std::string& vendor, Json::Value model, const std::string& document,
                                          const std::string& day) {
  const std::string spelled = SpellingOf(vendor);
  if (model.isObject()) {
    for (const char* member : kOfOthers) model.removeMember(member);
  }
  std::vector<PlacedMistake> mistakes = FindMistakes(spelled, model);
  if (!mistakes.empty()) return mistakes;
  File& file = FileOf(spelled);
  model["from"] = KeyOf(UserSource(document, day), file.json["sources"]);
  vendors_.emplace(LowerCase(spelled), spelled);
  known_.emplace(std::pair(LowerCase(spelled), LowerCase(model["name"].asString())), file.path.string());
  file.json["models"].append(std::move(model));
  return {};
}

/// To be changed.
OwnModels::File& OwnModels::FileOf(const std::string& vendor) {
  const auto [place, isNew] = files_.try_emplace(LowerCase(vendor));
  File& file = place->second;
  if (isNew) {
    file.path = folder_ / FileName(place->first);
    file.json["vendor"] = vendor;
    if (fs::exists(file.path)) file.mistake = "it is no model file of " + vendor;
  }
  if (!file.mistake.empty()) {
    throw std::runtime_error(file.path.string() + " has a mistake, and nothing is changed: " + file.mistake);
  }
  file.isChanged = true;
  return file;
}

bool OwnModels::Remove(const std::string& vendor, const std::string& model) {
  if (!files_.contains(LowerCase(vendor))) return false;
  Json::Value& file = FileOf(vendor).json;
  Json::Value& models = file["models"];
  const auto found = std::find_if(models.begin(), models.end(), [&](const Json::Value& entry) {
    return EqualsIgnoreCase(entry["name"].asString(), model);
  });
  if (found == models.end()) return false;
  Json::Value removed;
  models.removeIndex(found.index(), &removed);
  RemoveUnusedSources(file);
  return true;
}

void OwnModels::Write() {
  std::map<fs::path, std::string> texts;  // "": of a file without models
  for (auto& [vendor, file] : files_) {
    if (!std::exchange(file.isChanged, false)) continue;
    texts[file.path] = file.json["models"].empty() ? "" : CheckedText(file.path, file.json);
  }
  for (const auto& [path, text] : texts) text.empty() ? RemoveFile(path) : ReplaceFile(path, text);
}

std::vector<PlacedMistake> FindDoubts(const Json::Value& model) {
  std::vector<PlacedMistake> doubts;
  ForEachPath(model, [&](const std::string& place, const std::string& path) {
    const std::string what = FindPrivatePart(path);
    if (!what.empty()) doubts.push_back({place, "The path may hold " + what + ": look at it before you hand it on."});
  });
  return doubts;
}

}  // namespace recorder
