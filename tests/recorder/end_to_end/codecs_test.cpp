#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include "rig/cameras.h"
#include "rig/questions.h"
#include "tests/recorder/end_to_end/expect.h"

using namespace rig;

namespace {

/// A kind of camera, and how it is asked for.
struct Kind {
  const char* name;
  const char* stream;  ///< of the simulated camera
  const char* model;   ///< "vendor model"
  const char* path;    ///< that the user gives; PORT stands for the camera's
  const char* codec;   ///< that the user names
  const char* size;
};

const Kind kKinds[] = {
    {"H264", R"({"codec": "h264"})", "Simcam RTSP-H264", "", "", "640x480"},
    {"H265", R"({"codec": "h265"})", "Simcam RTSP-H265", "", "H.265", "640x480"},
    {"H264TenBits", R"({"codec": "h264", "depth": 10})", "Simcam RTSP-H264", "", "", "640x480"},
    {"H265TenBits", R"({"codec": "h265", "depth": 10})", "Simcam RTSP-H265", "", "H.265", "640x480"},
    {"Mpeg4", R"({"codec": "mpeg4"})", "Simcam RTSP-MPEG4", "", "MPEG4", "640x480"},
    {"H264OverUdp", R"({"codec": "h264", "transport": "udp"})", "Simcam RTSP-H264", "", "", "640x480"},
    {"H265OverUdp", R"({"codec": "h265", "transport": "udp"})", "Simcam RTSP-H265", "", "H.265", "640x480"},
    {"Mpeg4OverUdp", R"({"codec": "mpeg4", "transport": "udp"})", "Simcam RTSP-MPEG4", "", "MPEG4", "640x480"},
    {"JpegOverUdp", R"({"codec": "jpeg", "transport": "udp"})", "User ", "/stream1", "", "640x480"},
    {"AnyOfAModel", R"({"codec": "jpeg"})", "Simcam RTSP-Any", "", "", "640x480"},
    {"NamedOfAnyOfAModel", R"({"codec": "h265"})", "Simcam RTSP-Any", "", "H.265", "640x480"},
    {"HttpMjpeg", R"({"codec": "h264"})", "Simcam HTTP-MJPEG", "", "MJPEG", "640x480"},
    {"HttpJpegSetting", R"({"codec": "h264"})", "Simcam HTTP-Snapshot-Sizes", "", "MJPEG", "320x240"},
    {"FourthChannel", R"({"codec": "h264", "path": "/ch4/stream1"})", "Simcam VideoServer-4", "", "", "640x480"},
    {"PathOfTheUser", R"({"codec": "h264", "path": "/own%20path"})", "Simcam RTSP-Path", "/own path", "H.264",
     "640x480"},
    {"UserH265", R"({"codec": "h265"})", "User ", "stream1", "", "640x480"},
    {"UserJpegOverRtsp", R"({"codec": "jpeg"})", "User ", "/stream1", "", "640x480"},
    {"UserMjpegOverHttp", R"({"codec": "h264"})", "User ", "/video.mjpg", "MJPEG", "640x480"},
    {"UserPathInsideTls", R"({"codec": "h264"})", "User ", "rtsps://127.0.0.1:PORT/stream1", "H.264", "640x480"},
    {"UserPathOverHttp", R"({"codec": "h264"})", "User ", "/snapshot.jpg", "", "640x480"},
};

const char* const kLogins[] = {"none", "basic", "digest-md5", "digest-sha256"};

std::string NameOf(const Kind& kind, const std::string& login) { return std::string(kind.name) + " " + login; }

Json::Value CodecCameras() {
  Json::Value cameras(Json::arrayValue);
  for (const Kind& kind : kKinds) {
    for (const char* login : kLogins) {
      Json::Value camera;
      camera["login"] = login;
      if (std::string(kind.path).starts_with("rtsps")) camera["tls"] = "only";
      camera["stream"] = ParseJson(kind.stream);
      camera["snapshot"]["sizes"].append("320x240");
      cameras.append(Camera(NameOf(kind, login), camera));
    }
  }
  return cameras;
}

/// Width and height from the frame header of a JPEG (ITU-T T.81 B.2.2).
std::string SizeOf(const std::string& jpeg) {
  const auto number = [&](std::size_t at) {
    return std::to_string(static_cast<unsigned char>(jpeg[at]) * 256 + static_cast<unsigned char>(jpeg[at + 1]));
  };
  for (std::size_t at = 2; at + 9 < jpeg.size() && jpeg[at] == '\xFF';) {
    const auto marker = static_cast<unsigned char>(jpeg[at + 1]);
    if (marker >= 0xC0 && marker <= 0xC2) return number(at + 7) + "x" + number(at + 5);
    at += 2 + std::stoul(number(at + 2));
  }
  return "no picture";
}

}  // namespace

TEST(Codecs, EachWithEachLoginGivesPictureTestAndSize) {
  const SimCameras cameras(CodecCameras());
  const TestRecorder recorder;
  for (const Kind& kind : kKinds) {
    for (const char* login : kLogins) {
      SCOPED_TRACE(NameOf(kind, login));
      const int port = cameras.Port(NameOf(kind, login));
      Json::Value params = CameraParams(port, kSecret, kind.model);
      params["camChannel"] = std::string(kind.name) == "FourthChannel" ? "4" : "1";
      params["camSourcePath"] = std::regex_replace(kind.path, std::regex("PORT"), std::to_string(port));
      params["camVideoType"] = kind.codec;
      EXPECT_EQ(CodeOf(recorder, "CameraTest", params), 0);
      EXPECT_EQ(SizeOf(PictureOf(recorder.Post("GetSnapshot", params))), kind.size);
      // This method has another name for the codec, and says MJPEG by default, whatever the camera sends.
      EXPECT_EQ(recorder.Post("CamCapUserDefineReso", params).json["data"]["userDefineReso"], "640x480");
    }
  }
  EXPECT_THAT(recorder.Log(), testing::Not(testing::HasSubstr(kSecret)));
}

/// What comes of a camera with three streams when a codec is named.
struct WantedCodec {
  const char* codec;
  int testCode;
  const char* size;
};

const WantedCodec kWantedCodecs[] = {
    {"", 0, "640x480"},      {"H.265", 0, "640x480"},   {"H.264", 0, "320x240"},
    {"MJPEG", 0, "160x128"}, {"MPEG4", 466, "640x480"},
};

TEST(Codecs, OfSeveralTheOneThatIsAskedForComes) {
  constexpr char kStreams[] =
      R"("stream": [{"codec": "h265", "path": "/1"}, {"codec": "h264", "path": "/2", "width": 320, "height": 240},
                    {"codec": "jpeg", "path": "/3", "width": 160, "height": 128}]})";
  const SimCameras cameras(
      List({Camera("http", ParseJson(R"({"onvif": {}, )" + std::string(kStreams))),
            Camera("stream", ParseJson(R"({"onvif": {"snapshotUri": "none"}, )" + std::string(kStreams)))}));
  const TestRecorder recorder;
  for (const char* camera : {"http", "stream"}) {
    const int port = cameras.Port(camera);
    Json::Value params = CameraParams(port, kSecret, "ONVIF Generic");
    EXPECT_EQ(CodeOf(recorder, "CamBatAddVerify", params), 0);
    const auto size = [&] { return recorder.Post("CamCapUserDefineReso", params).json["data"]["userDefineReso"]; };
    EXPECT_EQ(size(), "640x480") << "no codec is named";
    const int id = recorder.AddCamera("ONVIF", "Generic", port, "admin", kSecret);
    for (const std::string password : {kSecret, kFakePass}) {
      for (const char* name : {"camPass", "camPassword", "camPassWord"}) params[name] = password;
      params["camId"] = password == kFakePass ? id : 0;
      for (const WantedCodec& wanted : kWantedCodecs) {
        SCOPED_TRACE(std::string(camera) + " " + wanted.codec + " " + password);
        params["camVideoType"] = params["camVdoType"] = wanted.codec;
        EXPECT_EQ(CodeOf(recorder, "CameraTest", params), wanted.testCode);
        EXPECT_EQ(SizeOf(PictureOf(recorder.Post("GetSnapshot", params))), wanted.size) << recorder.Log();
        EXPECT_EQ(size(), wanted.size);
      }
    }
    params.removeMember("camVdoType");
    EXPECT_EQ(size(), "640x480") << "no codec is named";
  }
}

/// A stream of one model that is asked for by codec, way and channel, and what comes of it.
struct WantedStream {
  const char* codec;
  const char* way;
  const char* channel;
  int testCode;
  const char* size;
};

constexpr WantedStream kWantedStreams[] = {
    {"", "", "1", 0, "640x480"},          {"H.264", "RTSP", "1", 0, "640x480"},   {"MJPEG", "", "1", 0, "320x240"},
    {"MJPEG", "HTTP", "1", 0, "320x240"}, {"MJPEG", "RTSP", "1", 466, "320x240"}, {"H.264", "", "7", 0, "160x128"},
    {"MJPEG", "", "7", 0, "320x240"},
};

TEST(Codecs, MotionJpegAtAnotherPathAndAChannelThatIsNotListedAreReached) {
  const SimCameras cameras(
      List({Camera("rtsp", ParseJson(R"({"stream": [{"codec": "h264", "path": "/ch0"},
                {"codec": "h264", "path": "/ch6", "width": 160, "height": 128}]})")),
            Camera("http", ParseJson(R"({"stream": {"codec": "h264", "width": 320, "height": 240}})"))}));
  Json::Value file = ParseJson(R"({"vendor": "Acme", "source": "a test", "models": [{"name": "A", "check": "stream",
      "channels": {"values": ["1"], "default": "1", "others": true}, "snapshot": {"kind": "stream"},
      "codecs": [{"name": "H.264", "streamTypes": ["RTSP"]}, {"name": "MJPEG", "streamTypes": ["HTTP"]}],
      "stream": {"path": "/ch{channel0}", "others": [{"codec": "MJPEG", "over": "HTTP", "path": "/video.mjpg"}]}}]})");
  file["models"][0]["stream"]["others"][0]["port"] = cameras.Port("http");
  const TempFolder models;
  models.Write("acme.json", ToText(file));
  CopySchema(models);
  const TestRecorder recorder({.modelsFolder = models.Path()});
  Json::Value params = CameraParams(cameras.Port("rtsp"), kSecret, "Acme A");
  for (const WantedStream& wanted : kWantedStreams) {
    SCOPED_TRACE(std::string(wanted.codec) + " " + wanted.way + " " + wanted.channel);
    params["camVideoType"] = wanted.codec;
    params["camStreamingType"] = wanted.way;
    params["camChannel"] = wanted.channel;
    EXPECT_EQ(CodeOf(recorder, "CameraTest", params), wanted.testCode) << recorder.Log();
    EXPECT_EQ(SizeOf(PictureOf(recorder.Post("GetSnapshot", params))), wanted.size) << recorder.Log();
  }
}

TEST(Codecs, APictureOfAUsersOwnMjpegCameraIsOneRequest) {
  const SimCameras cameras(List({Camera("camera", ParseJson(R"({"login": "none"})"))}));
  Json::Value params = CameraParams(cameras.Port("camera"), "", "User ");
  params["camSourcePath"] = "/video.mjpg";
  params["camVideoType"] = "MJPEG";
  EXPECT_EQ(SizeOf(PictureOf(TestRecorder().Post("GetSnapshot", params))), "640x480");
  EXPECT_EQ(cameras.Log("camera")["requestCount"].asInt(), 1);
}

struct LateCase {
  const char* name;
  const char* camera;  ///< its configuration
  const char* model;
};

/// Cameras that bring a key frame by one kind of request alone; some damage or lose the first.
constexpr LateCase kLateCases[] = {
    {"pictureLoss", R"({"stream": {"pli": true}})", "Simcam RTSP-H264"},
    {"fullIntra", R"({"stream": {"fir": true}})", "Simcam RTSP-H264"},
    {"media1", R"({"onvif": {"media": ["1"], "login": "token", "clockHours": 5}, "stream": {"sync": true}})",
     "ONVIF Generic"},
    {"media2", R"({"onvif": {"media": ["2"]}, "stream": {"sync": true}})", "ONVIF Generic"},
    {"media2InsideTls", R"({"onvif": {"tlsStream": true}, "tls": "too", "stream": {"sync": true}})", "ONVIF Generic"},
    {"damagedPictureLoss", R"({"fault": "damagedKeyFrame", "stream": {"pli": true}})", "Simcam RTSP-H264"},
    {"damagedFullIntra", R"({"fault": "damagedKeyFrame", "stream": {"fir": true}})", "Simcam RTSP-H264"},
    {"lostPictureLoss", R"({"fault": "lostPacket", "stream": {"pli": true, "transport": "udp"}})", "Simcam RTSP-H264"},
    {"damagedMedia2", R"({"fault": "damagedKeyFrame", "onvif": {}, "stream": {"sync": true}})", "ONVIF Generic"},
};

/// A camera with a key frame a minute, whose sessions start `seconds` before one.
Json::Value LateCamera(const char* name, const char* config, int seconds) {
  Json::Value camera = ParseJson(config);
  if (camera.isMember("onvif")) camera["onvif"]["snapshotUri"] = "none";
  for (const auto& [member, value] : {std::pair("width", 320), {"height", 240}, {"fps", 10}, {"gop", 600}}) {
    camera["stream"][member] = value;
  }
  camera["stream"]["start"] = seconds;
  return Camera(name, camera);
}

TEST(LateKeyFrames, ComeByKeepingTheSessionAlive) {
  const SimCameras cameras(List({LateCamera("camera", R"({"fault": "sessionTimeout"})", 6)}));
  const TestRecorder recorder({.pictureMs = 12'000, .workers = 1});
  const Answer answer = recorder.Post("GetSnapshot", CameraParams(cameras.Port("camera"), kSecret));
  EXPECT_EQ(SizeOf(PictureOf(answer)), "320x240") << "it ends after 5 s without a request";
}

TEST(LateKeyFrames, ComeWhenAskedForByWhateverTheCameraHonours) {
  const auto late = [](const LateCase& row) { return LateCamera(row.name, row.camera, 55); };
  const SimCameras cameras(ListOf(kLateCases, late));
  const TestRecorder recorder({.workers = 1});
  for (const LateCase& row : kLateCases) {
    SCOPED_TRACE(row.name);
    const auto picture = [&](const std::string& password) {
      return PictureOf(recorder.Post("GetSnapshot", CameraParams(cameras.Port(row.name), password, row.model)));
    };
    EXPECT_EQ(SizeOf(picture(kSecret)), "320x240") << recorder.Log();
    EXPECT_EQ(picture("wrong"), "");
    EXPECT_EQ(cameras.Log(row.name)["refusedLogins"], 1) << "a wrong password is one try";
  }
}
