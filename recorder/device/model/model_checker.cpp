#include "recorder/device/model/model_checker.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

#include "platform/device.h"
#include "recorder/device/model/model_facts.h"
#include "recorder/device/model/path_template.h"
#include "recorder/media/codecs.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

using Mistakes = std::vector<PlacedMistake>;

/// As a JSON pointer has a member's name (RFC 6901 section 3).
std::string EscapedForPointer(const std::string& name) {
  std::string escaped;
  for (const char c : name) escaped += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
  return escaped;
}

class ModelChecker {
 public:
  ModelChecker(const Json::Value& json, const Model& model, std::string place, Mistakes& mistakes)
      : json_(json), model_(model), place_(std::move(place)), mistakes_(mistakes) {}

  void Check() {
    if (HoldsControls(model_.name)) Report("/name", "A name holds no control character.");
    CheckChoices("/channels", model_.channels);
    CheckChoices("/frameRates", model_.frameRates);
    CheckChoices("/resolutions", model_.resolutions);
    CheckChoices("/qualities", model_.qualities);
    CheckCodecs();
    CheckRtsp();
    CheckStream();
    CheckSnapshot();
    CheckSources();
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
    const bool isListed = model_.presetCodec.empty() || HasCodec(model_.presetCodec);
    if (!isListed) Report("/defaultCodec", "The default is not among the codecs.");
  }

  void CheckRtsp() {
    const bool isOffered = ((model_.rtspProtocols >> model_.presetRtspProtocol) & 1U) != 0;
    if (model_.presetRtspProtocol != RTSP_PROTOCOL_AUTO && !isOffered) {
      Report("/rtsp/default", "The default is not among the protocols.");
    }
  }

  void CheckPath(const std::string& place, const ModelPath& path, PathKind kind) {
    if (const auto mistake = FindPathMistake(path.path, kind)) Report(place + "/path", *mistake);
  }

  void CheckStream() {
    const Json::Value& stream = json_["stream"];
    if (!stream["fromUser"].asBool()) return CheckStreams();
    if (stream.isMember("path") || stream.isMember("port") || stream.isMember("tls") || stream.isMember("others")) {
      Report("/stream", "A path that the user gives leaves no room for a path or port of the model.");
    }
  }

  void CheckStreams() {
    std::set<std::string> names;
    std::set<std::pair<std::string, std::string>> namesAndCodecs;
    for (std::size_t i = 0; i < model_.streams.size(); ++i) {
      const ModelStream& stream = model_.streams[i];
      const std::string place = "/" + StreamFactName(i);
      CheckPath(place, stream.from, PathKind::kStream);
      if (i > 0) CheckCodec(place, stream);
      const bool isNew = namesAndCodecs.insert({stream.name, stream.codec}).second;
      if (!isNew) Report(place + "/codec", "The stream has a path for this codec above.");
      names.insert(stream.name);
    }
    const bool isTold = model_.streamCount == 0 || names.size() <= static_cast<std::size_t>(model_.streamCount);
    if (!isTold) Report("/streams", "More streams have a path; 0 stands for an unknown number.");
  }

  /// Of a stream beside the usual one. Whatever a camera sends comes over RTSP; a codec, by a way that it is listed
  /// with.
  void CheckCodec(const std::string& place, const ModelStream& stream) {
    const std::string way = stream.isOverHttp ? "HTTP" : "RTSP";
    const bool mayLackCodec = stream.name != kMainStream && !stream.isOverHttp;
    if (stream.codec.empty() && mayLackCodec) return;
    if (stream.codec.empty()) return Report(place, "The main stream and one over HTTP name their codec.");
    if (!ComesOver(stream.codec, way)) {
      return Report(place + "/codec", "The codec is not among those that come over " + way + ".");
    }
    const bool isFetched = !stream.isOverHttp || CodecOfName(stream.codec)->isOverHttp;
    if (!isFetched) Report(place + "/over", "The recorder fetches this codec over RTSP alone.");
  }

  bool ComesOver(const std::string& codec, const std::string& way) const {
    const ModelCodec* found = FindCodec(codec);
    return found != nullptr &&
           std::find(found->streamTypes.begin(), found->streamTypes.end(), way) != found->streamTypes.end();
  }

  void CheckSnapshot() {
    if (model_.snapshot.kind == ModelSnapshotKind::kStream) return CheckStreamSnapshot();
    CheckPath("/snapshot", model_.snapshot.from, PathKind::kSnapshot);
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
    if (HasCodec(model_.presetCodec) && !ComesOver(model_.presetCodec, "RTSP")) {
      Report("/snapshot/kind", "A snapshot is taken from RTSP streams only, and the default codec has none.");
    }
    if (model_.check == ModelCheck::kDevice) Report("/check", "The device check needs a snapshot over HTTP.");
  }

  void CheckSources() {
    if (json_.isMember("from")) CheckSource("/from", json_["from"].asString());
    for (const std::string& fact : json_["facts"].getMemberNames()) {
      const std::string place = "/facts/" + EscapedForPointer(fact);
      CheckSource(place, json_["facts"][fact].asString());
      if (!HasFact(fact)) Report(place, "The model says nothing of this.");
    }
  }

  void CheckSource(const std::string& place, const std::string& key) {
    const bool isThere = model_.sources && std::any_of(model_.sources->begin(), model_.sources->end(),
                                                       [&](const ModelSource& source) { return source.key == key; });
    if (!isThere) Report(place, "There is no source " + key + " in this file.");
  }

  bool HasFact(const std::string& name) const {
    return std::any_of(model_.facts.begin(), model_.facts.end(),
                       [&](const ModelFact& fact) { return FactName(fact) == name; });
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
