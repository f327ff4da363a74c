#include <gtest/gtest.h>

#include <sstream>

#include "platform/device.h"
#include "recorder/device/capability/capability_document.h"
#include "recorder/device/model/model_files.h"

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

Json::Value Capability(const std::string& vendor, const std::string& model) {
  SetModelsFolder(MODELS_FOLDER);
  CamCapHandler handler;
  Json::Value capability;
  EXPECT_EQ(handler.LoadCapability(DP_LOAD_FROM_MODEL_FILES, vendor, model, "1", ""), 0);
  EXPECT_EQ(GetCamCap(vendor, model, handler, capability), 0);
  return capability;
}

TEST(CapabilityTest, UserDocumentIsTheKnownOne) {
  Json::Value known;
  std::istringstream(kUserDocument) >> known;
  for (const char* bits : {"rtspProtocolCap", "codecOptimizationCap"}) known[bits] = known[bits].asUInt();
  EXPECT_EQ(Capability("User", "any"), known);
}

TEST(CapabilityTest, ModelDocumentHoldsTheModel) {
  const Json::Value document = Capability("Simcam", "RTSP-H264-Snapshot");
  EXPECT_EQ(document["id"], "Simcam RTSP-H264-Snapshot");
  EXPECT_EQ(document["videoCapList"][1]["vt"], "MJPEG");
  EXPECT_EQ(document["FPSList"].size(), document["cntFPS"].asUInt());
  EXPECT_TRUE(document["MDCap"].asBool());
}

TEST(CapabilityTest, HandlerAnswersForTheLoadedModel) {
  SetModelsFolder(MODELS_FOLDER);
  CamCapHandler handler;
  ASSERT_EQ(handler.LoadCapability(DP_LOAD_FROM_MODEL_FILES, "Simcam", "HTTP-Snapshot-Sizes", "0", ""), 0);
  EXPECT_EQ(handler.GetDefaultChannel(), "1");
  EXPECT_TRUE(handler.GetListForCodec(VIDEO_TYPE_MPEG4).empty());
  EXPECT_EQ(handler.GetDefaultVideoType(), VIDEO_TYPE_H264);
  EXPECT_EQ(handler.GetStreamingTypeFor(VIDEO_TYPE_MJPEG), STREAMING_TYPE_HTTP);
}

TEST(CapabilityTest, AnUnaskedCameraKeepsItsChannel) {
  CamCapHandler handler;
  ASSERT_EQ(handler.LoadCapability(DP_LOAD_FROM_MODEL_FILES, "PSIA", "Generic", "7", ""), 0);
  EXPECT_EQ(handler.GetChannelList(), (std::list<std::string>{"1", "7"}));
  EXPECT_EQ(handler.GetDefaultChannel(), "");
}

}  // namespace
}  // namespace recorder
