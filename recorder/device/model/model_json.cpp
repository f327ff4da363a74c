#include "recorder/device/model/model_json.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/device.h"
#include "recorder/utility/translate.h"

namespace recorder {
namespace {

std::vector<std::string> Texts(const Json::Value& json) {
  std::vector<std::string> texts;
  for (const Json::Value& text : json) texts.push_back(text.asString());
  return texts;
}

Choices ReadChoices(const Json::Value& json) { return {Texts(json["values"]), json["default"].asString()}; }

ModelPath ReadPath(const Json::Value& json) {
  ModelPath path{json["path"].asString(), std::nullopt, json.get("tls", false).asBool()};
  if (json.isMember("port")) path.port = json["port"].asInt();
  return path;
}

/// The main stream in the default codec comes as that codec does.
bool IsPresetOverHttp(const Model& model) {
  const auto codec = std::find_if(model.codecs.begin(), model.codecs.end(),
                                  [&](const ModelCodec& candidate) { return candidate.name == model.presetCodec; });
  return codec != model.codecs.end() && codec->streamTypes.front() == "HTTP";
}

void ReadStreams(const Json::Value& json, Model& model) {
  if (json["fromUser"].asBool()) return;
  model.streams.reserve(1 + json["others"].size());
  model.streams.push_back({kMainStream, model.presetCodec, IsPresetOverHttp(model), ReadPath(json)});
  for (const Json::Value& other : json["others"]) {
    model.streams.push_back({other.get("stream", kMainStream).asString(), other["codec"].asString(),
                             other["over"] == "HTTP", ReadPath(other)});
  }
}

std::optional<OnvifMedia> ReadMedia(const Json::Value& json) {
  if (json.isNull()) return std::nullopt;
  OnvifMedia media{json["path"].asString(), json["version"] == 2, {}};
  for (const Json::Value& profile : json["profiles"]) {
    media.profiles.emplace(profile["codec"].asString(), profile["token"].asString());
  }
  return media;
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
  const std::string first = model.codecs.empty() ? "" : model.codecs.front().name;
  model.presetCodec = json.get("defaultCodec", first).asString();
}

void ReadSettings(const Json::Value& json, Model& model) {
  model.frameRates = ReadChoices(json["frameRates"]);
  model.resolutions = ReadChoices(json["resolutions"]);
  model.qualities = ReadChoices(json["qualities"]);
  model.hasOwnFrameRates = json["frameRates"]["perStream"].asBool();
  model.hasOwnResolutions = json["resolutions"]["perStream"].asBool();
  model.hasOwnQualities = json["qualities"]["perStream"].asBool();
}

void ReadSensors(const Json::Value& json, Model& model) {
  model.audioChannels = Texts(json["audioChannels"]);
  model.motionChannels = Texts(json["motionChannels"]);
  model.digitalInputs = json["digitalInputs"]["count"].asInt();
  model.hasSeparateInputs = json["digitalInputs"]["separate"].asBool();
  model.hasInputSettings = json["digitalInputs"]["settable"].asBool();
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

}  // namespace

Model ModelOfJson(const std::string& vendor, const Json::Value& json, const ModelSources& sources) {
  Model model;
  model.vendor = vendor;
  model.name = json["name"].asString();
  model.id = json.get("id", vendor + " " + model.name).asString();
  model.note = json["note"].asString();
  model.isVideoServer = json["videoServer"].asBool();
  model.channels = ReadChoices(json["channels"]);
  model.hasOtherChannels = json["channels"]["others"].asBool();
  ReadCodecs(json, model);
  ReadSettings(json, model);
  model.streamCount = json.get("streams", 1).asInt();
  ReadSensors(json, model);
  ReadRtsp(json["rtsp"], model);
  ReadCodecOptimization(json["codecOptimization"], model);
  model.presetUser = json["defaultUser"].asString();
  model.fisheyeType = json["fisheye"]["lens"].asInt();
  model.streamFisheyeType = json["fisheye"]["stream"].asInt();
  model.hasEdgeStorage = json["edgeStorage"].asBool();
  ReadStreams(json["stream"], model);
  model.media = ReadMedia(json["onvifMedia"]);
  model.snapshot = ReadSnapshot(json["snapshot"]);
  model.check = json["check"].asString() == "device" ? ModelCheck::kDevice : ModelCheck::kStream;
  model.readAt = json["readings"]["stream"]["time"].asInt64();
  model.facts = ReadFacts(json, sources);
  model.sources = sources;
  return model;
}

}  // namespace recorder
