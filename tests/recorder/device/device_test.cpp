#include "platform/device.h"

#include <gtest/gtest.h>

#include "recorder/device/device_api.h"
#include "recorder/device/http_probe.h"
#include "recorder/device/model_files.h"
#include "recorder/device/path_template.h"
#include "recorder/utility/handle.h"
#include "recorder/utility/outcome.h"
#include "tests/recorder/device/canned_server.h"

namespace recorder {
namespace {

struct SnapshotCase {
  const char* name;
  const char* vendor;
  const char* model;
  const char* channel;
  const char* sourcePath;
  int videoType;
  int result;
  const char* path;
  int kind;
};

const SnapshotCase kSnapshotCases[] = {
    {"Stream", "Simcam", "RTSP-H264", "", "", 0, 0, "/stream1", SNAPSHOT_KIND_STREAM},
    {"StreamOfChannel", "Simcam", "VideoServer-4", "3", "", 0, 0, "/ch3/stream1", SNAPSHOT_KIND_STREAM},
    {"ChannelOutsideThePath", "Simcam", "VideoServer-4", "3/../x", "", 0, 0, "/ch3%2F..%2Fx/stream1",
     SNAPSHOT_KIND_STREAM},
    {"Jpeg", "Simcam", "RTSP-H264-Snapshot", "7", "", 0, 0, "/snapshot.jpg", SNAPSHOT_KIND_HTTP_JPEG},
    {"JpegOfPreferredSize", "Simcam", "HTTP-Snapshot-Sizes", "", "", 0, 0, "/snapshot.jpg?size=640x480",
     SNAPSHOT_KIND_HTTP_JPEG},
    {"Mjpeg", "Simcam", "HTTP-MJPEG", "", "", 0, 0, "/video.mjpg", SNAPSHOT_KIND_HTTP_MJPEG},
    {"ModelWithUsersPath", "Simcam", "RTSP-Path", "", "live", VIDEO_TYPE_H264, 0, "live", SNAPSHOT_KIND_STREAM},
    {"ModelWithoutUsersPath", "Simcam", "RTSP-Path", "", "", VIDEO_TYPE_H264, -1, "", SNAPSHOT_KIND_STREAM},
    {"UserRtsp", "User", "", "", "/live", VIDEO_TYPE_H265, 0, "/live", SNAPSHOT_KIND_STREAM},
    {"UserMjpeg", "User", "", "", "/live", VIDEO_TYPE_MJPEG, 0, "/live", SNAPSHOT_KIND_HTTP_MJPEG},
    {"UserUnknownCodec", "User", "", "", "/live", VIDEO_TYPE_UNKNOWN, -1, "/live", SNAPSHOT_KIND_NONE},
    {"UserWithoutPath", "User", "", "", "", VIDEO_TYPE_H264, -1, "", SNAPSHOT_KIND_NONE},
};

class SnapshotPathTest : public testing::TestWithParam<SnapshotCase> {};

TEST_P(SnapshotPathTest, SaysWhereThePictureIs) {
  SetModelsFolder(MODELS_FOLDER);
  const SnapshotCase& row = GetParam();
  DeviceAPIHandler api;
  EXPECT_FALSE(api.IsValid());
  api.LoadByParam(DP_LOAD_FROM_MODEL_FILES, "127.0.0.1", 8000, "", "", row.vendor, row.model, row.channel,
                  row.sourcePath);
  ASSERT_TRUE(api.IsValid());
  if (api.NeedsSourcePath()) api.SelectVideoType(row.videoType, 0);
  std::string path;
  int port = 8000;
  int kind = 0;
  EXPECT_EQ(api.GetSnapshotPath(path, port, kind), row.result);
  EXPECT_EQ(path, row.path);
  EXPECT_EQ(port, 8000);
  EXPECT_EQ(kind, row.kind);
}

INSTANTIATE_TEST_SUITE_P(Snapshot, SnapshotPathTest, testing::ValuesIn(kSnapshotCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(DeviceTest, SnapshotAndCheckOverHttp) {
  SetModelsFolder(MODELS_FOLDER);
  CannedServer server({"HTTP/1.1 200 OK\r\n\r\n" + TinyJpeg(), "HTTP/1.1 200 OK\r\n\r\n" + TinyJpeg(),
                       "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n"});
  DeviceAPIHandler api;
  api.LoadByParam(DP_LOAD_FROM_MODEL_FILES, "127.0.0.1", server.Port(), "", "", "Simcam", "HTTP-Snapshot-Sizes", "",
                  "");
  ASSERT_TRUE(api.IsValid());
  EXPECT_FALSE(api.HasStreamPath());
  EXPECT_EQ(RetDevApiToRetCV(api.VerifyConnection()), CAMERA_VERIFY_PASSED);

  unsigned char* jpeg = nullptr;
  int size = 0;
  ASSERT_EQ(SnapshotGetFromAPI("127.0.0.1", server.Port(), "", "", api, "320x240", &jpeg, &size, 0), 0);
  const MallocBytes owner(jpeg);
  EXPECT_EQ(std::string(jpeg, jpeg + size), TinyJpeg());
  EXPECT_EQ(RetDevApiToRetCV(api.VerifyConnection()), CAMERA_VERIFY_NO_SUCH_STREAM);
  EXPECT_TRUE(server.Requests()[1].starts_with("GET /snapshot.jpg?size=320x240 "));
}

TEST(DeviceTest, UnknownModelIsNotValid) {
  SetModelsFolder(MODELS_FOLDER);
  DeviceAPIHandler api;
  api.LoadByParam(DP_LOAD_FROM_MODEL_FILES, "127.0.0.1", 1, "", "", "Simcam", "none", "", "");
  EXPECT_FALSE(api.IsValid());
  EXPECT_FALSE(api.NeedsSourcePath());
}

TEST(DeviceTest, CapabilityFileNeedsTheCamera) {
  SetModelsFolder(MODELS_FOLDER);
  CannedServer server({"HTTP/1.1 200 OK\r\n\r\n" + TinyJpeg(), "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n",
                       "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n",
                       "HTTP/1.1 403 Forbidden\r\nContent-Length: 0\r\n\r\n"});
  const std::string file = std::string(MODELS_FOLDER) + "/simcam.json";
  CamProfile profile;
  profile.ip = "127.0.0.1";
  profile.port = server.Port();
  profile.vendor = "Simcam";
  profile.model = "HTTP-Snapshot-Sizes";
  struct {
    __tag_REMOTE_CAMCAP_CMD cmd;
    int result;
    std::string path;
  } const steps[] = {{REMOTE_CAMCAP_ASK_NOW, CAMCAP_FILE_OBTAINED, file},
                     {REMOTE_CAMCAP_ASK_NOW, CAMCAP_FILE_NO_SERVICE, ""},
                     {REMOTE_CAMCAP_AS_NEEDED, CAMCAP_FILE_SUBSTITUTED, file},
                     {REMOTE_CAMCAP_AS_NEEDED, CAMCAP_FILE_LOGIN_REFUSED, ""}};
  for (const auto& step : steps) {
    std::string path;
    EXPECT_EQ(CamCapUtils::GetCamCapFile(profile, path, step.cmd), step.result);
    EXPECT_EQ(path, step.path);
  }
}

TEST(DeviceTest, PlaceholdersAreFilledAndEncoded) {
  EXPECT_EQ(FillPath("/{channel}/x{setting}", {{"channel", "a b/?&"}, {"setting", "~1"}}), "/a%20b%2F%3F%26/x~1");
}

}  // namespace
}  // namespace recorder
