#include "recorder/device/asked/merged_channels.h"

#include <algorithm>
#include <set>

#include "recorder/device/asked/channel_paths.h"

namespace recorder {
namespace {

/// Members that a path depends on, and those that a model may leave out.
constexpr const char* kOfPaths[] = {"codecs", "defaultCodec", "stream", "snapshot"};
constexpr const char* kOptional[] = {"frameRates", "resolutions", "qualities", "streams", "digitalInputs", "rtsp"};
constexpr const char* kListsOfChannels[] = {"audioChannels", "motionChannels"};

/// The paths in an entry, in an order that is the same for entries with the same members.
std::vector<Json::Value*> PathsIn(Json::Value& entry) {
  std::vector<Json::Value*> paths{&entry["stream"]["path"]};
  if (entry["stream"].isMember("others")) {
    for (Json::Value& other : entry["stream"]["others"]) paths.push_back(&other["path"]);
  }
  if (entry["snapshot"].isMember("path")) paths.push_back(&entry["snapshot"]["path"]);
  return paths;
}

/// What must be the same in all entries.
Json::Value Skeleton(Json::Value entry) {
  for (Json::Value* path : PathsIn(entry)) *path = "";
  Json::Value skeleton;
  for (const char* member : kOfPaths) skeleton[member] = entry[member];
  return skeleton;
}

bool AreAlike(const Json::Value& models) {
  const Json::Value first = Skeleton(models[0]);
  return std::all_of(models.begin(), models.end(), [&](const Json::Value& model) { return Skeleton(model) == first; });
}

/// Puts the paths of all `models` into `entry`, the first one. False when some differ by more than the channel.
bool MergePaths(Json::Value models, Json::Value& entry) {
  const std::vector<Json::Value*> merged = PathsIn(entry);
  std::vector<std::vector<ChannelPath>> paths(merged.size());
  for (Json::Value& model : models) {
    const std::vector<Json::Value*> own = PathsIn(model);
    for (std::size_t i = 0; i < own.size(); ++i) paths[i].push_back({model["name"].asString(), own[i]->asString()});
  }
  for (std::size_t i = 0; i < merged.size(); ++i) {
    const auto common = CommonPath(paths[i]);
    if (!common) return false;
    *merged[i] = *common;
  }
  return true;
}

/// Calls `get` with each model, and says whether it gives the same of all.
template <class Get>
bool IsSame(const Json::Value& models, Get get) {
  return std::all_of(models.begin(), models.end(),
                     [&](const Json::Value& model) { return get(model) == get(models[0]); });
}

void RemoveDifferent(const Json::Value& models, Json::Value& entry) {
  for (const char* member : kOptional) {
    if (!IsSame(models, [&](const Json::Value& model) { return model[member]; })) entry.removeMember(member);
  }
  for (const char* member : kListsOfChannels) {
    const bool isSame = IsSame(models, [&](const Json::Value& model) { return model["readings"][member]["source"]; });
    if (!isSame) entry["readings"].removeMember(member);
  }
}

/// What each model says of its own channel.
void MergeLists(const Json::Value& models, Json::Value& entry) {
  for (const char* member : kListsOfChannels) {
    Json::Value list(Json::arrayValue);
    for (const Json::Value& model : models) {
      const bool isIn = std::find(model[member].begin(), model[member].end(), model["name"]) != model[member].end();
      if (isIn) list.append(model["name"]);
    }
    entry[member] = list;
  }
}

/// In the camera's order; the first model's, where a long list was cut before it.
std::vector<std::string> ChannelsOf(const Json::Value& models) {
  std::set<std::string> told;
  for (const Json::Value& model : models) told.insert(model["name"].asString());
  std::vector<std::string> channels;
  for (const Json::Value& channel : models[0]["channels"]["values"]) {
    if (told.contains(channel.asString())) channels.push_back(channel.asString());
  }
  if (channels.empty()) channels.push_back(models[0]["name"].asString());
  return channels;
}

}  // namespace

MergedChannels MergeChannels(const Json::Value& models) {
  Json::Value entry = models[0];
  Json::Value told(Json::arrayValue);
  if (AreAlike(models) && MergePaths(models, entry)) {
    told = models;
  } else {
    entry = models[0];
    told.append(models[0]);
  }
  RemoveDifferent(told, entry);
  MergeLists(told, entry);
  return {std::move(entry), ChannelsOf(told)};
}

}  // namespace recorder
