#include "recorder/device/capability/capability_document.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace recorder {
namespace {

/// A name that is used where it stands, not copied with each document.
using Key = Json::StaticString;

Json::Value TextList(const std::vector<std::string>& texts) {
  Json::Value list(Json::arrayValue);
  for (const std::string& text : texts) list.append(text);
  return list;
}

int Count(const Choices& choices) { return static_cast<int>(choices.values.size()); }

void AddChannels(const Model& model, Json::Value& document) {
  document[Key("VideoSvr")] = model.isVideoServer;
  document[Key("ChanlList")] = TextList(model.channels.values);
  document[Key("defChanl")] = model.channels.preset;
  document[Key("cntChanl")] = std::max(1, Count(model.channels));
}

void AddVideo(const Model& model, Json::Value& document) {
  document[Key("videoCap")] = 1;  // every model sends video; a number, as clients know it
  Json::Value& codecs = document[Key("videoCapList")] = Json::Value(Json::arrayValue);
  for (const ModelCodec& codec : model.codecs) {
    Json::Value& entry = codecs.append(Json::Value(Json::objectValue));
    entry[Key("vt")] = codec.name;
    entry[Key("stList")] = TextList(codec.streamTypes);
  }
  document[Key("singleStream")] = model.streamCount <= 1;
  document[Key("streamCnt")] = model.streamCount;
  document[Key("codecOptimizationCap")] = model.codecOptimizations;
  document[Key("defCodecOptimization")] = model.presetCodecOptimization;
}

void AddSettings(const Model& model, Json::Value& document) {
  document[Key("FPSList")] = TextList(model.frameRates.values);
  document[Key("ResoList")] = TextList(model.resolutions.values);
  document[Key("QualList")] = TextList(model.qualities.values);
  document[Key("defFPS")] = model.frameRates.preset;
  document[Key("defReso")] = model.resolutions.preset;
  document[Key("defQual")] = model.qualities.preset;
  document[Key("cntFPS")] = Count(model.frameRates);
  document[Key("cntRes")] = Count(model.resolutions);
  document[Key("cntQual")] = Count(model.qualities);
  document[Key("fpsIndCap")] = model.hasOwnFrameRates;
  document[Key("resIndCap")] = model.hasOwnResolutions;
  document[Key("qualIndCap")] = model.hasOwnQualities;
}

void AddAudioAndSensors(const Model& model, Json::Value& document) {
  document[Key("audioCap")] = !model.audioChannels.empty();
  document[Key("AudioCHList")] = TextList(model.audioChannels);
  document[Key("MDCap")] = !model.motionChannels.empty();
  document[Key("MDList")] = TextList(model.motionChannels);
  document[Key("DINum")] = model.digitalInputs;
  document[Key("multiDI")] = model.hasSeparateInputs;
  document[Key("setDICap")] = model.hasInputSettings;
}

void AddConnection(const Model& model, Json::Value& document) {
  document[Key("defUser")] = model.presetUser;
  document[Key("defPass")] = "";  // a model file holds no password
  document[Key("defRtspProtocol")] = model.presetRtspProtocol;
  document[Key("rtspProtocolCap")] = model.rtspProtocols;
  document[Key("defRtspKeepAlive")] = model.hasRtspKeepAlive ? 1 : 0;
}

Json::Value MakeDocument(const Model& model) {
  Json::Value document(Json::objectValue);
  document[Key("id")] = model.id;
  AddChannels(model, document);
  AddVideo(model, document);
  AddSettings(model, document);
  AddAudioAndSensors(model, document);
  AddConnection(model, document);
  document[Key("fisheyeType")] = model.fisheyeType;
  document[Key("stmFisheyeType")] = model.streamFisheyeType;
  document[Key("hasEdgeStg")] = model.hasEdgeStorage;
  return document;
}

/// Some documents of late. To copy one takes a third of the time that it takes to make it.
class LateDocuments {
 public:
  Json::Value Of(const std::shared_ptr<const Model>& model) {
    const std::lock_guard lock(mutex_);
    const auto known = entries_.find(model.get());
    if (known != entries_.end() && known->second.model.lock() == model) return known->second.document;
    if (entries_.size() == kMost) entries_.clear();
    return (entries_[model.get()] = {model, MakeDocument(*model)}).document;
  }

 private:
  static constexpr std::size_t kMost = 64;
  struct Entry {
    std::weak_ptr<const Model> model;  // another one may come to be at the place of one that is gone
    Json::Value document;
  };
  std::mutex mutex_;
  std::unordered_map<const Model*, Entry> entries_;
};

}  // namespace

Json::Value CapabilityDocument(const std::shared_ptr<const Model>& model) {
  static LateDocuments documents;
  return documents.Of(model);
}

}  // namespace recorder
