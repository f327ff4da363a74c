#include <gtest/gtest.h>

#include "platform/device.h"
#include "recorder/device/capability_document.h"
#include "recorder/device/model_files.h"

namespace recorder {
namespace {

/// What clients know of a camera of vendor "User"; every other document has the same members with the same types.
constexpr char kUserDocument[] = R"({
  "id": "User Define", "VideoSvr": false, "ChanlList": [], "defChanl": "1", "cntChanl": 1, "MDCap": false, "DINum": 0,
  "multiDI": false, "setDICap": false, "resIndCap": false, "fpsIndCap": false, "qualIndCap": false, "defFPS": "",
  "defReso": "", "defQual": "", "cntFPS": 0, "cntRes": 0, "cntQual": 0, "videoCap": 1,
  "videoCapList": [{"vt": "MJPEG", "stList": ["HTTP"]}, {"vt": "H.264", "stList": ["RTSP"]},
                   {"vt": "MPEG4", "stList": ["RTSP"]}],
  "FPSList": [], "ResoList": [], "QualList": [], "audioCap": false, "AudioCHList": [], "MDList": [],
  "singleStream": true, "defUser": "", "defPass": "", "fisheyeType": 0, "stmFisheyeType": 0, "defRtspProtocol": 4,
  "rtspProtocolCap": 11, "defCodecOptimization": 1, "defRtspKeepAlive": 1, "codecOptimizationCap": 0, "streamCnt": 0,
  "hasEdgeStg": false})";

Json::Value UserDocument() {
  Json::Value document;
  Json::CharReaderBuilder builder;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  reader->parse(kUserDocument, kUserDocument + sizeof(kUserDocument) - 1, &document, nullptr);
  document["rtspProtocolCap"] = 11U;
  document["codecOptimizationCap"] = 0U;
  return document;
}

Json::Value Capability(const std::string& vendor, const std::string& model) {
  SetModelsFolder(MODELS_FOLDER);
  CamCapHandler handler;
  EXPECT_EQ(handler.LoadCapability(DP_LOAD_FROM_MODEL_FILES, vendor, model, "1", ""), 0);
  Json::Value capability;
  EXPECT_EQ(GetCamCap(vendor, model, handler, capability), 0);
  return capability;
}

TEST(CapabilityTest, UserDocumentIsTheKnownOne) { EXPECT_EQ(Capability("User", "any"), UserDocument()); }

TEST(CapabilityTest, ModelDocumentHasTheSameMembers) {
  const Json::Value document = Capability("Simcam", "RTSP-H264-Snapshot");
  const Json::Value known = UserDocument();
  EXPECT_EQ(document.getMemberNames(), known.getMemberNames());
  for (const std::string& member : known.getMemberNames()) {
    EXPECT_EQ(document[member].type(), known[member].type()) << member;
  }
  EXPECT_EQ(document["id"], "Simcam RTSP-H264-Snapshot");
  EXPECT_EQ(document["videoCapList"][1]["vt"], "MJPEG");
  EXPECT_EQ(document["FPSList"].size(), document["cntFPS"].asUInt());
  EXPECT_EQ(document["defReso"], "640x480");
  EXPECT_TRUE(document["MDCap"].asBool());
  EXPECT_EQ(document["DINum"], 2);
}

TEST(CapabilityTest, HandlerAnswersForTheLoadedModel) {
  SetModelsFolder(MODELS_FOLDER);
  CamCapHandler handler;
  Json::Value untouched("untouched");
  EXPECT_NE(handler.LoadCapability(DP_LOAD_FROM_MODEL_FILES, "Simcam", "no such model", "1", ""), 0);
  EXPECT_NE(GetCamCap("Simcam", "no such model", handler, untouched), 0);
  EXPECT_EQ(untouched, "untouched");

  ASSERT_EQ(handler.LoadCapability(DP_LOAD_FROM_MODEL_FILES, "Simcam", "HTTP-Snapshot-Sizes", "0", ""), 0);
  EXPECT_EQ(handler.GetDefaultChannel(), "1");
  EXPECT_EQ(handler.GetListForCodec(VIDEO_TYPE_MJPEG).front(), "320x240");
  EXPECT_TRUE(handler.GetListForCodec(VIDEO_TYPE_MPEG4).empty());
  EXPECT_EQ(handler.GetDefaultVideoType(), VIDEO_TYPE_H264);
  EXPECT_EQ(handler.GetStreamingTypeFor(VIDEO_TYPE_MJPEG), STREAMING_TYPE_HTTP);

  ASSERT_EQ(handler.LoadCapability(DP_LOAD_FROM_MODEL_FILES, "Simcam", "VideoServer-4", "1", ""), 0);
  EXPECT_EQ(handler.GetChannelList(), (std::list<std::string>{"1", "2", "3", "4"}));
}

TEST(CapabilityTest, ModelListNamesWhatAClientNeeds) {
  SetModelsFolder(MODELS_FOLDER);
  Json::Value models(Json::arrayValue);
  EXPECT_TRUE(GetCamModelEnumInfo(models));
  const Json::Value& user = models[models.size() - 1];
  EXPECT_EQ(user["vendor"], "User");
  EXPECT_EQ(user["model"], "");
  EXPECT_TRUE(user["needsSourcePath"].asBool());
  EXPECT_FALSE(models[0]["needsSourcePath"].asBool());

  SetModelsFolder("/nonexistent");
  EXPECT_FALSE(GetCamModelEnumInfo(models));
}

}  // namespace
}  // namespace recorder
