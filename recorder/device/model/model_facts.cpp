#include "recorder/device/model/model_facts.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "recorder/utility/translate.h"

namespace recorder {
namespace {

/// The last one stands for the main stream; further numbers are `others` of it.
constexpr std::string_view kMembers[] = {
    "channels",      "codecs",         "frameRates",    "resolutions", "qualities",         "streams",
    "audioChannels", "motionChannels", "digitalInputs", "rtsp",        "codecOptimization", "defaultUser",
    "fisheye",       "edgeStorage",    "snapshot",      "stream",
};
constexpr std::size_t kMainStreamMember = std::size(kMembers) - 1;

constexpr std::pair<std::string_view, SaidBy> kSaidBy[] = {
    {"document", SaidBy::kDocument}, {"agreeing", SaidBy::kAgreeing}, {"reported", SaidBy::kReported},
    {"camera", SaidBy::kCamera},     {"user", SaidBy::kUser},
};

std::uint16_t IndexOf(const ModelSources& sources, const std::string& key) {
  if (!sources) return ModelFact::kNoSource;
  const auto found =
      std::find_if(sources->begin(), sources->end(), [&](const ModelSource& source) { return source.key == key; });
  return found == sources->end() ? ModelFact::kNoSource : static_cast<std::uint16_t>(found - sources->begin());
}

bool IsChannelOne(const Json::Value& channels) { return channels.size() == 1 && channels[0] == "1"; }

/// What the user gives, a number that is not known, and a picture from the stream, say nothing of the camera; nor does
/// a channel "1" alone, which every camera is asked for, unless `named` says who says that it is the only one.
bool SaysSomething(std::string_view member, const Json::Value& value, const Json::Value& named) {
  if (member == "channels") return named.isMember("channels") || !IsChannelOne(value["values"]);
  if (member == "stream") return !value["fromUser"].asBool();
  if (member == "streams") return value != 0;
  if (member == "snapshot") return value["kind"] != "stream";
  return true;
}

/// `named` has the key of its source for each fact that has another one than the rest.
void NameOtherSources(const Json::Value& named, const ModelSources& sources, std::vector<ModelFact>& facts) {
  if (named.empty()) return;
  for (ModelFact& fact : facts) {
    const Json::Value& key = named[FactName(fact)];
    if (!key.isNull()) fact.source = IndexOf(sources, key.asString());
  }
}

}  // namespace

ModelSources ReadSources(const Json::Value& json) {
  if (json.empty()) return nullptr;
  std::vector<ModelSource> sources;
  for (const std::string& key : json.getMemberNames()) {
    const Json::Value& source = json[key];
    sources.push_back({key, source["document"].asString(), source["url"].asString(), source["page"].asString(),
                       source["checked"].asString(), Translate(kSaidBy, source["by"].asString(), SaidBy::kReported)});
  }
  return std::make_shared<const std::vector<ModelSource>>(std::move(sources));
}

std::vector<ModelFact> ReadFacts(const Json::Value& model, const ModelSources& sources) {
  std::vector<ModelFact> facts;
  facts.reserve(std::size(kMembers) + model["stream"]["others"].size());
  const std::uint16_t usual = IndexOf(sources, model["from"].asString());
  const auto add = [&](std::size_t member) { facts.push_back({static_cast<std::uint16_t>(member), usual}); };
  for (std::size_t i = 0; i < std::size(kMembers); ++i) {
    const Json::Value* value = model.find(kMembers[i].data(), kMembers[i].data() + kMembers[i].size());
    if (value != nullptr && SaysSomething(kMembers[i], *value, model["facts"])) add(i);
  }
  for (std::size_t i = 0; i < model["stream"]["others"].size(); ++i) add(std::size(kMembers) + i);
  NameOtherSources(model["facts"], sources, facts);
  facts.shrink_to_fit();
  return facts;
}

std::string FactName(const ModelFact& fact) {
  return fact.member < kMainStreamMember ? std::string(kMembers[fact.member])
                                         : StreamFactName(fact.member - kMainStreamMember);
}

const ModelSource* SourceOf(const Model& model, const ModelFact& fact) {
  return fact.source == ModelFact::kNoSource ? nullptr : &model.sources->at(fact.source);
}

const ModelSource* SourceOf(const Model& model, std::string_view factName) {
  const auto found = std::find_if(model.facts.begin(), model.facts.end(),
                                  [&](const ModelFact& fact) { return FactName(fact) == factName; });
  return found == model.facts.end() ? nullptr : SourceOf(model, *found);
}

std::string StreamFactName(std::size_t index) {
  return index == 0 ? "stream" : "stream/others/" + std::to_string(index - 1);
}

std::string_view NameOf(SaidBy by) {
  const auto* found =
      std::find_if(std::begin(kSaidBy), std::end(kSaidBy), [&](const auto& row) { return row.second == by; });
  return found->first;
}

void CountFacts(const Model& model, FactCounts& counts) {
  for (const ModelFact& fact : model.facts) {
    const ModelSource* source = SourceOf(model, fact);
    ++counts[source == nullptr ? "" : NameOf(source->by)];
  }
}

}  // namespace recorder
