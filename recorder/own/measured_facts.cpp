#include "recorder/own/measured_facts.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "recorder/device/find/measure_json.h"
#include "recorder/own/stored_camera.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/limits.h"

namespace recorder {

namespace {

constexpr char kMeasured[] = "measured";

std::string SizeText(const Json::Value& measured) {
  if (measured["width"].isNull()) return "";
  return measured["width"].asString() + "x" + measured["height"].asString();
}

/// With the unit behind it; "" for what is not known.
std::string WithUnit(const Json::Value& number, const char* unit) {
  if (number.isNull()) return "";
  std::string text = std::to_string(number.asDouble());
  text.erase(text.find_last_not_of('0') + 1);
  if (text.ends_with('.')) text.pop_back();
  return text + unit;
}

/// The texts that there are, by the names of facts.
std::vector<std::pair<std::string, std::string>> TextsOf(const Json::Value& measured) {
  std::vector<std::pair<std::string, std::string>> texts = {
      {"codec", measured["codec"].asString()},
      {"size", SizeText(measured)},
      {"frameRate", WithUnit(measured["frameRate"], "")},
      {"bitRate", WithUnit(measured["bitRate"], "")},
      {"keyFrames", WithUnit(measured["keyFrameDistance"], "")},
      {"audio", measured["audio"].asString()},
  };
  std::erase_if(texts, [](const auto& entry) { return entry.second.empty(); });
  return texts;
}

std::vector<CameraFact> WithMeasured(std::vector<CameraFact> facts, const std::string& stream,
                                     const MeasureResult& measured) {
  std::erase_if(facts, [&](const CameraFact& fact) { return fact.stream == stream && fact.from == kMeasured; });
  for (const auto& [name, value] : TextsOf(MeasureJson(measured))) {
    facts.push_back({.stream = stream, .name = name, .value = value, .from = kMeasured, .at = SecondsNow()});
  }
  while (facts.size() > kMostFacts) facts.erase(std::ranges::min_element(facts, {}, &CameraFact::at));
  return facts;
}

/// Whether the stream is still asked by what it was asked by.
bool IsAskedBy(const CameraRecord& asked, const CameraRecord& camera, const std::string& stream,
               const Records& records) {
  const auto now = FindStreamRecord(records, camera, stream);
  return now && KeepsPassword(asked, *now) && asked.channel == now->channel;
}

}  // namespace

void KeepMeasured(Records& records, const CameraRecord& asked, const std::string& stream,
                  const MeasureResult& measured) {
  ChangeResult result = ChangeResult::kOtherRevision;
  while (result == ChangeResult::kOtherRevision) {  // somebody else was first
    const auto camera = records.Find(asked.id);
    if (!camera || !IsAskedBy(asked, *camera, stream, records)) return;
    CameraChange change;
    change.revision = camera->revision;
    change.facts = WithMeasured(records.Facts(camera->id), stream, measured);
    if (FindMistake(*change.facts)) return;
    result = records.Change(camera->id, change);
  }
}

}  // namespace recorder
