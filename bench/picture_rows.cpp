#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "bench/key_frame.h"
#include "bench/long_way.h"
#include "bench/rows.h"
#include "bench/session.h"
#include "rig/cameras.h"
#include "rig/http_client.h"
#include "rig/proxy.h"
#include "rig/questions.h"
#include "rig/recorder.h"

namespace bench {

using namespace rig;

namespace {

constexpr char kUser[] = "admin";
constexpr char kPassword[] = "bench";  // without a character that has a meaning in an address
constexpr char kCamera[] = "camera";

struct Stream {
  const char* name;
  const char* model;  ///< and path
  const char* codec;  ///< the simulated camera's name of it
  const char* videoType;
  PictureSize size;
  bool isForGStreamer;
};

constexpr Stream kStreams[] = {
    {"H.264 640×480", "h264-480", "h264", "H.264", {640, 480}, false},
    {"H.264 1080p", "h264-1080", "h264", "H.264", {1920, 1080}, false},
    {"H.265 4K", "h265-4k", "h265", "H.265", {3840, 2160}, true},
    {"MPEG-4 640×480", "mpeg4-480", "mpeg4", "MPEG4", {640, 480}, true},
    {"MJPEG 1080p", "mjpeg-1080", "jpeg", "MJPEG", {1920, 1080}, true},
};

// Options of ffmpeg and ffprobe: as people call them, and without the wait for more of the stream.
constexpr char kUsual[] = "";
constexpr char kTuned[] = " -rtsp_transport tcp -probesize 32 -analyzeduration 0";

constexpr Goal kAgainstUsual{.bound = 0.05};
constexpr Goal kWarmAgainstTuned{.bound = 0.5};
constexpr Goal kColdAgainstTuned{.bound = 0.9};
constexpr Goal kSizeAgainstTuned{.bound = 0.9};
constexpr Goal kAgainstFloor{.bound = 1.15, .orMore = 1};

/// One camera with all streams. Every session starts at a key frame, and nothing is encoded while somebody watches. Its
/// login is Digest without qop (RFC 2069), whose answers can be replayed.
Json::Value CameraConfig() {
  Json::Value camera = ParseJson(R"({"server": "scripted", "login": {"offer": ["digest-md5"], "qop": false}})");
  camera["name"] = kCamera;
  camera["user"] = kUser;
  camera["password"] = kPassword;
  for (const Stream& stream : kStreams) {
    Json::Value& config = camera["stream"].append(Json::Value());
    config["codec"] = stream.codec;
    config["width"] = stream.size.width;
    config["height"] = stream.size.height;
    config["path"] = std::string("/") + stream.model;
  }
  return camera;
}

/// Models of vendor "Simcam", one a stream.
std::filesystem::path WriteStreamModels(const TempFolder& folder) {
  Json::Value file = ParseJson(R"({"vendor": "Simcam", "source": "made for this run"})");
  for (const Stream& stream : kStreams) {
    Json::Value& model = file["models"].append(ParseJson(R"({
      "channels": {"values": ["1"], "default": "1"}, "snapshot": {"kind": "stream"}, "check": "stream"})"));
    model["name"] = stream.model;
    model["stream"]["path"] = std::string("/") + stream.model;
    Json::Value& codec = model["codecs"].append(Json::Value());
    codec["name"] = stream.videoType;
    codec["streamTypes"].append("RTSP");
  }
  folder.Write("simcam.json", ToText(file));
  CopySchema(folder);
  return folder.Path();
}

/// A recorder's web server, behind which all is answered with one picture.
class PictureServer {
 public:
  explicit PictureServer(const std::string& jpeg) {
    const std::string head = "Content-type: image/jpeg\r\nContent-length: " + std::to_string(jpeg.size());
    setenv("BENCH_ANSWER", folder_.Write("answer", head + "\r\n\r\n" + jpeg).c_str(), 1);
    server_.emplace(TestRecorder::Options{.serveArguments = {"--worker", PROGRAM_FOLDER "/bench_empty_responder"}});
    client_.emplace(server_->Port());
  }

  /// The body of the answer to a request, which is the picture.
  std::string Ask(const std::string& request) { return client_->Ask(request).body; }

 private:
  const TempFolder folder_;
  std::optional<TestRecorder> server_;
  std::optional<HttpClient> client_;
};

/// The ways to a picture of one stream and to its size.
class StreamWays {
 public:
  StreamWays(const Stream& stream, int cameraPort, const TestRecorder& recorder, const TempFolder& folder)
      : stream_(stream),
        cameraPort_(cameraPort),
        recorder_(recorder),
        address_("rtsp://127.0.0.1:" + std::to_string(cameraPort) + "/" + stream.model),
        addressWithLogin_(std::string("rtsp://") + kUser + ":" + kPassword +
                          "@127.0.0.1:" + std::to_string(cameraPort) + "/" + stream.model),
        output_(folder.Path() / "picture.jpg"),
        parameters_(folder.Write("parameters.json", ToText(PictureParameters(cameraPort)))) {}

  Way Warm() { return TimedPicture(Request("GetSnapshot", PictureParameters(cameraPort_))); }

  Way Cold() {
    return TimedOutput([this] {
      return recorder_.Control({"call", "GetSnapshot", "--json", parameters_.string(), "-o", output_.string()});
    });
  }

  Way Ffmpeg(const std::string& options) {
    return TimedCommand("/usr/bin/ffmpeg",
                        "-nostdin -v error -y" + options + " -i " + addressWithLogin_ + " -frames:v 1 ");
  }

  Way GStreamer() {
    const std::string login = std::string(" user-id=") + kUser + " user-pw=" + kPassword;
    return TimedCommand("/usr/bin/gst-launch-1.0", "-q rtspsrc location=" + address_ + login +
                                                       " protocols=tcp latency=0 " +
                                                       "! decodebin ! jpegenc snapshot=true ! filesink location=");
  }

  /// The same session by a bare client, the libraries' work alone, and the same web server with a responder that has
  /// the picture already.
  Way Floor() {
    Proxy camera;
    camera.LeadTo(cameraPort_);
    TimedPicture(Request("GetSnapshot", PictureParameters(camera.Port())))();
    auto keyFrame = std::make_shared<KeyFrame>(addressWithLogin_);
    auto server = std::make_shared<PictureServer>(keyFrame->ToJpeg());
    const std::string request = Request("GetSnapshot", PictureParameters(cameraPort_));
    return [this, session = SessionOf(camera), keyFrame, server, request] {
      std::string jpeg;
      const double time = TimeOf([&] {
        Replay(session, cameraPort_);
        keyFrame->ToJpeg();
        jpeg = server->Ask(request);
      });
      CheckPicture(jpeg);
      return time;
    };
  }

  Way Size() {
    Json::Value parameters = CameraParams(cameraPort_, kPassword, std::string("Simcam ") + stream_.model);
    parameters["camVdoType"] = stream_.videoType;
    return TimedReply(Request("CamCapUserDefineReso", parameters), [this](const Reply& reply) {
      CheckSize(ParseJson(reply.body)["data"]["userDefineReso"].asString());
    });
  }

  Way Ffprobe(const std::string& options) {
    return [this, words = Words("-v quiet" + options + " -select_streams v:0 -show_entries stream=width,height -of " +
                                "csv=p=0:s=x " + addressWithLogin_)] {
      std::string text;
      const double time = TimeOf([&] { text = rig::Run("/usr/bin/ffprobe", words).output; });
      CheckSize(text.substr(0, text.find('\n')));
      return time;
    };
  }

 private:
  Json::Value PictureParameters(int port) const {
    Json::Value parameters = CameraParams(port, kPassword, std::string("Simcam ") + stream_.model);
    parameters["camVideoType"] = stream_.videoType;
    parameters["jsonResponse"] = false;
    return parameters;
  }

  std::string Request(const std::string& method, const Json::Value& parameters) const {
    return HttpRequest("POST", kApi + method, recorder_.Login(), ToText(parameters));
  }

  /// Over a connection of its own, which does not wait idly until the server ends it.
  Way TimedReply(const std::string& request, std::function<void(const Reply&)> check) const {
    return [request, check = std::move(check), client = std::make_shared<HttpClient>(recorder_.Port())] {
      Reply reply;
      const double time = TimeOf([&] { reply = client->Ask(request); });
      check(reply);
      return time;
    };
  }

  Way TimedPicture(const std::string& request) const {
    return TimedReply(request, [this](const Reply& reply) { CheckPicture(reply.body); });
  }

  /// A command that leaves a picture in `output_`.
  Way TimedOutput(std::function<Finished()> command) const {
    return [this, command = std::move(command)] {
      std::filesystem::remove(output_);
      const double time = TimeOf(command);
      CheckPicture(ReadText(output_));
      return time;
    };
  }

  /// `line` ends where the name of that file is to stand.
  Way TimedCommand(const std::string& program, const std::string& line) const {
    return TimedOutput([program, words = Words(line + output_.string())] { return rig::Run(program, words); });
  }

  void CheckPicture(const std::string& jpeg) const {
    const PictureSize size = DecodedSize(jpeg);
    CheckSize(std::to_string(size.width) + "x" + std::to_string(size.height));
  }

  void CheckSize(const std::string& size) const {
    const std::string right = std::to_string(stream_.size.width) + "x" + std::to_string(stream_.size.height);
    if (size != right) throw WrongAnswer("a picture of " + size + " instead of " + right);
  }

  const Stream& stream_;
  const int cameraPort_;
  const TestRecorder& recorder_;
  const std::string address_;
  const std::string addressWithLogin_;
  const std::filesystem::path output_;
  const std::filesystem::path parameters_;
};

void AddRowsOf(const Stream& stream, StreamWays& ways, Report& table) {
  constexpr char kWarm[] = "GetSnapshot over HTTP";
  constexpr char kCold[] = "recorderctl call, cold";
  const std::string name = std::string("first JPEG, ") + stream.name;
  AddRow(table, name, kWarm, "ffmpeg", Compare(ways.Warm(), ways.Ffmpeg(kUsual)), kAgainstUsual);
  AddRow(table, name, kWarm, "ffmpeg, tuned", Compare(ways.Warm(), ways.Ffmpeg(kTuned)), kWarmAgainstTuned);
  AddRow(table, name, kCold, "ffmpeg, tuned", Compare(ways.Cold(), ways.Ffmpeg(kTuned)), kColdAgainstTuned);
  if (stream.isForGStreamer) {
    AddRow(table, name, kWarm, "gst-launch", Compare(ways.Warm(), ways.GStreamer()), kWarmAgainstTuned);
    AddRow(table, name, kCold, "gst-launch", Compare(ways.Cold(), ways.GStreamer()), kColdAgainstTuned);
  }
  constexpr char kBareClient[] = "replay + decode + encode + the same web server";
  const std::string floor = std::string("floor, ") + stream.name;
  AddRow(table, floor, kWarm, kBareClient, Compare(ways.Warm(), ways.Floor()), kAgainstFloor);
}

void AddSizeRows(StreamWays& ways, const Stream& stream, Report& table) {
  const std::string name = std::string("picture size, ") + stream.name;
  AddRow(table, name, "CamCapUserDefineReso", "ffprobe", Compare(ways.Size(), ways.Ffprobe(kUsual)), kAgainstUsual);
  AddRow(table, name, "CamCapUserDefineReso", "ffprobe, tuned", Compare(ways.Size(), ways.Ffprobe(kTuned)),
         kSizeAgainstTuned);
}

}  // namespace

void AddPictureRows(Report& table) {
  const TempFolder folder;
  const TempFolder models;
  const SimCameras cameras(List({CameraConfig()}));
  const TestRecorder recorder({.modelsFolder = WriteStreamModels(models)});
  for (const Stream& stream : kStreams) {
    StreamWays ways(stream, cameras.Port(kCamera), recorder, folder);
    AddRowsOf(stream, ways, table);
  }
  for (const Stream& stream : kStreams) {
    StreamWays ways(stream, cameras.Port(kCamera), recorder, folder);
    AddSizeRows(ways, stream, table);
  }
}

/// With a login by Digest. A picture can come after five round trips at the earliest, ffmpeg's after six.
void AddFarRow(Report& table) {
  constexpr std::chrono::milliseconds kOneWay{50};
  const Stream& stream = kStreams[1];
  const TempFolder folder;
  const TempFolder models;
  const SimCameras cameras(List({CameraConfig()}));
  const TestRecorder recorder({.modelsFolder = WriteStreamModels(models)});
  const LongWay way(cameras.Port(kCamera), kOneWay);
  StreamWays ways(stream, way.Port(), recorder, folder);
  AddRow(table, std::string("first JPEG, 100 ms of round trip, ") + stream.name, "GetSnapshot over HTTP",
         "ffmpeg, tuned", Compare(ways.Warm(), ways.Ffmpeg(kTuned)), kWarmAgainstTuned);
}

}  // namespace bench
