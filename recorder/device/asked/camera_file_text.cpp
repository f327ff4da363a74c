#include "recorder/device/asked/camera_file_text.h"

#include <json/json.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/device.h"
#include "recorder/device/model/built_in_models.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

// Bounds of a model file, and of what any client can make use of.
constexpr std::size_t kMaxText = 64;
constexpr std::size_t kMaxPath = 2048;
constexpr std::size_t kMaxValues = 128;
constexpr int kMaxInputs = 256;
constexpr int kMaxStreams = 16;

bool IsUsable(const std::string& text) {
  return !text.empty() && text.size() <= kMaxText && IsUtf8(text) && !HoldsControls(text);
}

/// The usable ones of `texts`, each once.
Json::Value UsableTexts(const std::vector<std::string>& texts) {
  Json::Value list(Json::arrayValue);
  std::vector<std::string> taken;
  for (const std::string& text : texts) {
    const bool isNew = std::find(taken.begin(), taken.end(), text) == taken.end();
    if (!IsUsable(text) || !isNew || taken.size() == kMaxValues) continue;
    taken.push_back(text);
    list.append(text);
  }
  return list;
}

/// Null when nothing usable can be chosen.
Json::Value ChoicesOf(const std::vector<std::string>& values, const std::string& preset) {
  Json::Value json;
  const Json::Value list = UsableTexts(values);
  if (list.empty()) return json;
  json["values"] = list;
  const bool hasPreset = std::find(list.begin(), list.end(), Json::Value(preset)) != list.end();
  json["default"] = hasPreset ? Json::Value(preset) : list[0];
  return json;
}

/// Where a member of a model comes from.
enum class Source { kCamera, kAssumed };

/// A camera that left something out said nothing of it.
template <class T>
Source SourceOf(const std::optional<T>& said) {
  return said ? Source::kCamera : Source::kAssumed;
}

/// Writes the model of one channel, member by member, and notes for each where it comes from.
class ModelWriter {
 public:
  ModelWriter(const std::string& vendor, const CameraReport& report, std::int64_t time)
      : vendor_(vendor), report_(report), time_(time) {}

  Json::Value Write() {
    model_["name"] = report_.channel;
    model_["id"] = vendor_ + " " + kGenericName;
    if (IsUsable(report_.device)) model_["source"] = report_.device;
    WriteDevice();
    Set("channels", Channels(), Source::kCamera);
    WriteVideo();
    WriteSensors();
    Set("rtsp", Rtsp(), SourceOf(report_.rtspProtocols));
    WriteStream();
    WriteMedia();
    WriteSnapshot();
    model_["check"] = "stream";
    return model_;
  }

 private:
  void Set(const char* member, const Json::Value& value, Source source) {
    if (!value.isNull()) model_[member] = value;
    Json::Value& reading = model_["readings"][member];
    reading["source"] = source == Source::kCamera ? "camera" : "assumed";
    reading["time"] = Json::Int64(time_);
  }

  void SetChoices(const char* member, const std::optional<Choices>& choices) {
    Set(member, choices ? ChoicesOf(choices->values, choices->preset) : Json::Value(), SourceOf(choices));
  }

  /// As many as there is room for; the one that was asked about is among them.
  Json::Value Channels() const {
    Json::Value channels = ChoicesOf(report_.channels, report_.channels.empty() ? "" : report_.channels.front());
    if (channels.isNull() || channels["values"].size() < kMaxValues) return channels;
    Json::Value& values = channels["values"];
    const bool isIn = std::find(values.begin(), values.end(), Json::Value(report_.channel)) != values.end();
    if (!isIn) values[values.size() - 1] = report_.channel;
    return channels;
  }

  void WriteDevice() {
    if (IsUsable(report_.maker)) model_["device"]["maker"] = report_.maker;
    if (IsUsable(report_.model)) model_["device"]["model"] = report_.model;
  }

  void WriteVideo() {
    Json::Value codecs(Json::arrayValue);
    for (const ModelCodec& codec : report_.codecs) {
      Json::Value& entry = codecs.append(Json::Value(Json::objectValue));
      entry["name"] = codec.name;
      entry["streamTypes"] = UsableTexts(codec.streamTypes);
    }
    Set("codecs", codecs, Source::kCamera);
    const bool isOffered = std::any_of(report_.codecs.begin(), report_.codecs.end(),
                                       [&](const ModelCodec& codec) { return codec.name == report_.codec; });
    if (isOffered) Set("defaultCodec", report_.codec, Source::kCamera);
    SetChoices("frameRates", report_.frameRates);
    SetChoices("resolutions", report_.resolutions);
    SetChoices("qualities", report_.qualities);
    Set("streams", std::clamp(report_.streamCount.value_or(1), 1, kMaxStreams), SourceOf(report_.streamCount));
  }

  void WriteSensors() {
    using Channels = std::vector<std::string>;
    Set("audioChannels", UsableTexts(report_.audioChannels.value_or(Channels())), SourceOf(report_.audioChannels));
    Set("motionChannels", UsableTexts(report_.motionChannels.value_or(Channels())), SourceOf(report_.motionChannels));
    const int count = std::clamp(report_.digitalInputs.value_or(0), 0, kMaxInputs);
    Json::Value inputs;
    inputs["count"] = count;
    inputs["separate"] = count > 1;  // each input has its own state in both protocols
    Set("digitalInputs", inputs, SourceOf(report_.digitalInputs));
  }

  Json::Value Rtsp() const {
    constexpr std::pair<RTSP_PROTOCOL, const char*> kNames[] = {{RTSP_PROTOCOL_UDP, "udp"},
                                                                {RTSP_PROTOCOL_TCP, "tcp"},
                                                                {RTSP_PROTOCOL_MULTICAST, "multicast"},
                                                                {RTSP_PROTOCOL_HTTP, "http"}};
    constexpr unsigned int kUsual = 1U << RTSP_PROTOCOL_UDP | 1U << RTSP_PROTOCOL_TCP;
    Json::Value rtsp;
    rtsp["protocols"] = Json::Value(Json::arrayValue);
    for (const auto& [protocol, name] : kNames) {
      if (((report_.rtspProtocols.value_or(kUsual) >> protocol) & 1U) != 0) rtsp["protocols"].append(name);
    }
    return rtsp;
  }

  static void AddPath(const ModelPath& path, Json::Value& target) {
    target["path"] = path.path;
    if (path.port) target["port"] = *path.port;
    if (path.isTls) target["tls"] = true;
  }

  void WriteStream() {
    Json::Value stream;
    AddPath(report_.stream, stream);
    for (const ModelStream& other : report_.otherStreams) {
      if (other.from.path.size() > kMaxPath) continue;
      Json::Value& entry = stream["others"].append(Json::Value(Json::objectValue));
      entry["codec"] = other.codec;
      AddPath(other.from, entry);
    }
    Set("stream", stream, Source::kCamera);
  }

  /// Without readings: nobody chooses by it.
  void WriteMedia() {
    if (!report_.media || report_.media->path.size() > kMaxPath) return;
    Json::Value& media = model_["onvifMedia"];
    media["path"] = report_.media->path;
    media["version"] = report_.media->isMedia2 ? 2 : 1;
    media["profiles"] = Json::Value(Json::arrayValue);
    for (const auto& [codec, token] : report_.media->profiles) {
      if (!IsUsable(token)) continue;
      Json::Value& profile = media["profiles"].append(Json::Value(Json::objectValue));
      profile["codec"] = codec;
      profile["token"] = token;
    }
  }

  void WriteSnapshot() {
    Json::Value snapshot;
    snapshot["kind"] = report_.snapshot ? "http-jpeg" : "stream";
    if (report_.snapshot) AddPath(*report_.snapshot, snapshot);
    Set("snapshot", snapshot, SourceOf(report_.snapshot));
  }

  const std::string& vendor_;
  const CameraReport& report_;
  const std::int64_t time_;
  Json::Value model_;
};

/// True for a model of an earlier file that is about another channel which the camera still has.
bool IsKept(const Json::Value& model, const CameraReport& report) {
  const std::string channel = model["name"].asString();
  return channel != report.channel &&
         std::find(report.channels.begin(), report.channels.end(), channel) != report.channels.end();
}

}  // namespace

std::string CameraFileText(const std::string& vendor, const std::string& place, const CameraReport& report,
                           std::int64_t time, const Json::Value& earlier) {
  Json::Value file;
  file["vendor"] = vendor;
  file["source"] = "the camera at " + place;
  Json::Value& models = file["models"];
  models.append(ModelWriter(vendor, report, time).Write());
  for (const Json::Value& model : earlier["models"]) {
    if (IsKept(model, report) && models.size() < kMaxValues) models.append(model);
  }
  return Json::writeString(Json::StreamWriterBuilder(), file);
}

}  // namespace recorder
