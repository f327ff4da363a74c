#include "recorder/device/capability/capability_document.h"

#include <algorithm>
#include <string>
#include <vector>

namespace recorder {
namespace {

Json::Value TextList(const std::vector<std::string>& texts) {
  Json::Value list(Json::arrayValue);
  for (const std::string& text : texts) list.append(text);
  return list;
}

int Count(const Choices& choices) { return static_cast<int>(choices.values.size()); }

void AddChannels(const Model& model, Json::Value& document) {
  document["VideoSvr"] = model.isVideoServer;
  document["ChanlList"] = TextList(model.channels.values);
  document["defChanl"] = model.channels.preset;
  document["cntChanl"] = std::max(1, Count(model.channels));
}

void AddVideo(const Model& model, Json::Value& document) {
  document["videoCap"] = 1;  // every model sends video; a number, as clients know it
  Json::Value& codecs = document["videoCapList"] = Json::Value(Json::arrayValue);
  for (const ModelCodec& codec : model.codecs) {
    Json::Value& entry = codecs.append(Json::Value(Json::objectValue));
    entry["vt"] = codec.name;
    entry["stList"] = TextList(codec.streamTypes);
  }
  document["singleStream"] = model.streamCount <= 1;
  document["streamCnt"] = model.streamCount;
  document["codecOptimizationCap"] = model.codecOptimizations;
  document["defCodecOptimization"] = model.presetCodecOptimization;
}

void AddSettings(const Model& model, Json::Value& document) {
  document["FPSList"] = TextList(model.frameRates.values);
  document["ResoList"] = TextList(model.resolutions.values);
  document["QualList"] = TextList(model.qualities.values);
  document["defFPS"] = model.frameRates.preset;
  document["defReso"] = model.resolutions.preset;
  document["defQual"] = model.qualities.preset;
  document["cntFPS"] = Count(model.frameRates);
  document["cntRes"] = Count(model.resolutions);
  document["cntQual"] = Count(model.qualities);
  document["fpsIndCap"] = model.hasOwnFrameRates;
  document["resIndCap"] = model.hasOwnResolutions;
  document["qualIndCap"] = model.hasOwnQualities;
}

void AddAudioAndSensors(const Model& model, Json::Value& document) {
  document["audioCap"] = !model.audioChannels.empty();
  document["AudioCHList"] = TextList(model.audioChannels);
  document["MDCap"] = !model.motionChannels.empty();
  document["MDList"] = TextList(model.motionChannels);
  document["DINum"] = model.digitalInputs;
  document["multiDI"] = model.hasSeparateInputs;
  document["setDICap"] = model.hasInputSettings;
}

void AddConnection(const Model& model, Json::Value& document) {
  document["defUser"] = model.presetUser;
  document["defPass"] = "";  // a model file holds no password
  document["defRtspProtocol"] = model.presetRtspProtocol;
  document["rtspProtocolCap"] = model.rtspProtocols;
  document["defRtspKeepAlive"] = model.hasRtspKeepAlive ? 1 : 0;
}

}  // namespace

Json::Value CapabilityDocument(const Model& model) {
  Json::Value document(Json::objectValue);
  document["id"] = model.id;
  AddChannels(model, document);
  AddVideo(model, document);
  AddSettings(model, document);
  AddAudioAndSensors(model, document);
  AddConnection(model, document);
  document["fisheyeType"] = model.fisheyeType;
  document["stmFisheyeType"] = model.streamFisheyeType;
  document["hasEdgeStg"] = model.hasEdgeStorage;
  return document;
}

}  // namespace recorder
