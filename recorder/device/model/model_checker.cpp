#include "recorder/device/model/model_checker.h"

#include <algorithm>
#include <initializer_list>
#include <set>
#include <string_view>
#include <utility>

#include "platform/device.h"
#include "recorder/device/model/path_template.h"

namespace recorder {
namespace {

using Mistakes = std::vector<PlacedMistake>;

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
    if (!stream["fromUser"].asBool()) {
      CheckPath("/stream", *model_.stream, {"channel", "stream"});
      return CheckOtherStreams();
    }
    if (stream.isMember("path") || stream.isMember("port") || stream.isMember("tls") || stream.isMember("others")) {
      Report("/stream", "A path that the user gives leaves no room for a path or port of the model.");
    }
  }

  void CheckOtherStreams() {
    std::set<std::string> codecs{model_.presetCodec};
    for (std::size_t i = 0; i < model_.otherStreams.size(); ++i) {
      const ModelStream& other = model_.otherStreams[i];
      const std::string place = "/stream/others/" + std::to_string(i);
      CheckPath(place, other.from, {"channel", "stream"});
      if (!HasRtsp(other.codec)) Report(place + "/codec", "The codec is not among those that come over RTSP.");
      if (!codecs.insert(other.codec).second) Report(place + "/codec", "The codec has a path above.");
    }
  }

  bool HasRtsp(const std::string& codec) const {
    const ModelCodec* found = FindCodec(codec);
    return found != nullptr &&
           std::find(found->streamTypes.begin(), found->streamTypes.end(), "RTSP") != found->streamTypes.end();
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
    if (HasCodec(model_.presetCodec) && !HasRtsp(model_.presetCodec)) {
      Report("/snapshot/kind", "A snapshot is taken from RTSP streams only, and the default codec has none.");
    }
    if (model_.check == ModelCheck::kDevice) Report("/check", "The device check needs a snapshot over HTTP.");
  }

  const Json::Value& json_;
  const Model& model_;
  const std::string place_;
  Mistakes& mistakes_;
};

}  // namespace

void CheckModel(const Json::Value& json, const Model& model, const std::string& place, Mistakes& mistakes) {
  ModelChecker(json, model, place, mistakes).Check();
}

}  // namespace recorder
