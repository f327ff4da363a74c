#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "rig/cameras.h"
#include "rig/proxy.h"
#include "tests/recorder/end_to_end/expect.h"

// What can be done with a stored password by callers who do not know it, and by who sits at a camera's address.

using namespace rig;

namespace {

// A clip costs no time to encode.
constexpr char kClip[] = R"("server": "scripted", "stream": {"source": "clip", "start": "key"})";

/// A camera with `members` of its configuration, in JSON.
Json::Value Clip(const std::string& name, const std::string& members = "") {
  return Camera(name, ParseJson(std::string("{") + kClip + (members.empty() ? "" : ", ") + members + "}"));
}

/// Sets one thing about the camera in `params`, under all names that methods have for it.
void Set(Json::Value& params, const std::string& what, const Json::Value& value) {
  const std::map<std::string, std::vector<const char*>> names = {
      {"host", {"camIP"}},         {"port", {"camPort"}}, {"user", {"camUser", "camUserName"}},
      {"path", {"camSourcePath"}}, {"id", {"camId"}},
  };
  const std::map<std::string, const char*> rowNames = {{"host", "ip"}, {"port", "port"}, {"user", "username"}};
  if (what == "model") {
    const Json::Value other = CameraParams(0, "", value.asString());
    for (const char* name : {"camModel", "vendor", "model"}) params[name] = other[name];
    for (const char* name : {"vendor", "model"}) params["camList"][0][name] = other[name];
    return;
  }
  for (const char* name : names.at(what)) params[name] = value;
  if (rowNames.contains(what)) params["camList"][0][rowNames.at(what)] = value;
}

/// True for a method that is told what `what` is.
bool Takes(const std::string& method, const std::string& what) {
  if (what == "path") return method != "CamBatAddVerify" && method != "CamCapRemote";
  return what != "id" || method != "CamBatAddVerify";
}

/// Once no more come: the recorder does not wait for what it says in the end of a session.
int Logins(const SimCameras& cameras, const std::string& name) {
  const auto read = [&] { return cameras.Log(name)["logins"].asInt(); };
  int logins = read();
  for (int before = -1; before != logins;) {
    before = logins;
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    logins = read();
  }
  return logins;
}

struct Stored {
  const char* name;
  std::string model;
  std::string path;

  std::string Vendor() const { return model.substr(0, model.find(' ')); }
  std::string Model() const { return model.substr(model.find(' ') + 1); }
  int Add(const TestRecorder& recorder, int port) const {
    return recorder.AddCamera(Vendor(), Model(), port, "admin", kSecret, "1", path);
  }
  Json::Value Params(int port, int id, const std::string& password = kFakePass) const {
    Json::Value params = CameraParams(port, password, model);
    params["camId"] = id;
    Set(params, "path", path);
    return params;
  }
};

const Stored kStored[] = {{"stream", "Simcam RTSP-H264", ""},
                          {"picture", "Simcam HTTP-Snapshot-Sizes", ""},
                          {"path", "User ", "/stream1"},
                          {"onvif", "ONVIF Generic", ""},
                          {"psia", "PSIA Generic", ""}};

/// What is asked for in place of a stored camera.
struct Variant {
  const char* name;
  std::string what;
  Json::Value value;
};

std::vector<Variant> VariantsOf(const Stored& camera, const SimCameras& cameras,
                                const std::map<std::string, int>& ids) {
  const bool isStream = std::string(camera.name) == "stream";
  const char* other = isStream ? "picture" : "stream";
  return {
      {"another path", "path", "/cgi-bin/users.cgi?action=modify"},
      {"a longer path", "path", camera.path + "?"},
      {"another user", "user", "operator"},
      {"no user", "user", ""},
      {"the host by another name", "host", "localhost"},
      {"another camera's port", "port", cameras.Port(other)},
      {"another model", "model", isStream ? "Simcam RTSP-Path" : "Simcam RTSP-H264"},
      {"any camera", "model", std::string(camera.name) == "path" ? "User x" : "User "},
      {"another camera's id", "id", ids.at(other)},
      {"no camera's id", "id", 99},
  };
}

}  // namespace

TEST(StoredPassword, IsForItsOwnStreamAlone) {
  const SimCameras cameras(List({Clip("stream"), Clip("picture"), Clip("path"), Clip("onvif", R"("onvif": {})"),
                                 Clip("psia", R"("psia": {"channels": ["1"]})")}));
  const TestRecorder recorder;
  std::map<std::string, int> ids;
  for (const Stored& camera : kStored) ids[camera.name] = camera.Add(recorder, cameras.Port(camera.name));
  const auto seen = [&] {
    int connections = 0;
    for (const Stored& camera : kStored) connections += cameras.Log(camera.name)["connections"].asInt();
    return connections;
  };
  for (const Stored& camera : kStored) {
    for (const std::string method : kCameraMethods) {
      for (const Variant& variant : VariantsOf(camera, cameras, ids)) {
        for (const int id : {ids[camera.name], 0}) {
          SCOPED_TRACE(method + " of " + camera.name + ", " + variant.name + ", id " + std::to_string(id));
          if (!Takes(method, variant.what) || (id == 0 && variant.what == "id")) continue;
          Json::Value params = camera.Params(cameras.Port(camera.name), id);
          Set(params, variant.what, variant.value);
          if (variant.value == "User ") Set(params, "path", "/cgi-bin/users.cgi?action=modify");
          const int before = seen();
          EXPECT_NE(CodeOf(recorder, method, params), 0);
          // Before its path is known, a camera that is asked may be asked at its services, as at any time.
          const bool isAsked = method == "CameraTest" && camera.Model() == "Generic" && variant.what == "path";
          EXPECT_TRUE(isAsked || seen() == before) << "a camera was contacted";
        }
      }
    }
  }
  for (const std::string name : {"onvif", "psia"}) {
    const Json::Value log = cameras.Log(name);
    for (const Json::Value& request : log["requests"]) {
      EXPECT_THAT(request["path"].asString(), testing::StartsWith(name == "psia" ? "/PSIA/" : "/onvif/"));
    }
  }
  for (const Stored& camera : kStored) {
    EXPECT_EQ(CodeOf(recorder, "CameraTest", camera.Params(cameras.Port(camera.name), ids[camera.name])), 0);
    EXPECT_EQ(CodeOf(recorder, "GetSnapshot", camera.Params(cameras.Port(camera.name), 0)), 0) << recorder.Log();
    EXPECT_EQ(cameras.Log(camera.name)["refusedLogins"].asInt(), 0) << camera.name;
  }
  EXPECT_THAT(recorder.Log(), testing::Not(testing::HasSubstr("[lent-")));
}

TEST(StoredPassword, OfEachCameraOfAListIsItsOwn) {
  Json::Value second = Clip("second");
  second["password"] = "another";
  const SimCameras cameras(List({Clip("first"), second}));
  const TestRecorder recorder;
  recorder.AddCamera("Simcam", "RTSP-H264", cameras.Port("first"), "admin", kSecret, "");
  recorder.AddCamera("Simcam", "RTSP-H264", cameras.Port("second"), "admin", "another");
  Json::Value rows;
  for (const char* name : {"first", "second"}) rows.append(BatchRow(name, cameras.Port(name), kFakePass));
  const Answer tested = recorder.Post("CamBatAddVerify", Batch(rows));
  for (const Json::Value& row : tested.json["data"]["resultList"]) {
    EXPECT_EQ(row["result"], 0) << row << recorder.Log();
  }
  Json::Value params = CameraParams(cameras.Port("second"), kFakePass);
  params["camChannel"] = "";
  EXPECT_EQ(CodeOf(recorder, "CameraTest", params), 0) << "its channel is the model's default one";
}

// The camera leads the recorder on, over RTSP or HTTP, before it asks for a login or after it took one.
TEST(StoredPassword, IsNotShownWhereTheCameraRedirectsTo) {
  const SimCameras target(List({Clip("basic", R"("login": "basic")")}));
  const std::string address = "127.0.0.1:" + std::to_string(target.Port("basic"));
  const std::string rtsp = R"("fault": "redirectRtsp", "redirectTo": "rtsp://)" + address + R"(/stream1", "login": )";
  const std::string http =
      R"("fault": "redirectOther", "redirectTo": "http://)" + address + R"(/snapshot.jpg", "login": )";
  const Stored kWays[] = {{"rtsp", "Simcam RTSP-H264", ""},
                          {"rtsp", "User ", "/stream1"},
                          {"http", "Simcam HTTP-Snapshot-Sizes", ""},
                          {"http", "User ", "/snapshot.jpg"}};
  for (const std::string login : {"none", "basic", "digest-md5", "digest-sha256"}) {
    const SimCameras cameras(List({Clip("rtsp", rtsp + '"' + login + '"'), Clip("http", http + '"' + login + '"')}));
    const TestRecorder recorder;
    for (const Stored& way : kWays) {
      SCOPED_TRACE(login + ": " + way.name + " " + way.model);
      const int port = cameras.Port(way.name);
      const int id = way.Add(recorder, port);
      const int reached = target.Log("basic")["connections"].asInt();
      for (const std::string method : kCameraMethods) {
        for (const char* password : {kFakePass, kSecret}) {
          const bool isTypedForBasic = password == kSecret && !login.starts_with("digest");
          if (isTypedForBasic) continue;  // whoever types the password has asked for no more
          Json::Value params = way.Params(port, id, password);
          params["camVideoType"] = params["camVdoType"] = way.name == std::string("rtsp") ? "H.264" : "MJPEG";
          EXPECT_NE(CodeOf(recorder, method, params), 0) << method;
        }
      }
      EXPECT_GT(target.Log("basic")["connections"].asInt(), reached) << "the redirect was not followed";
      EXPECT_EQ(Logins(target, "basic"), 0);
      EXPECT_EQ(recorder.Control({"camera", "remove", std::to_string(id)}).status, 0);
    }
  }
}

TEST(StoredPassword, IsNotShownWithoutTlsWhereThereWasACertificate) {
  const SimCameras cameras(List({Clip("camera", R"("tls": "too", "onvif": {"login": "token", "tlsStream": true,
                                                  "snapshotUri": "none"})")}));
  const TestRecorder recorder;
  const Stored onvif{"camera", "ONVIF Generic", ""};
  const int port = cameras.Port("camera");
  const Json::Value params = onvif.Params(port, onvif.Add(recorder, port));
  EXPECT_EQ(recorder.Post("GetSnapshot", params).cause, "ok") << "its stream is inside TLS";
  const int logins = Logins(cameras, "camera");
  recorder.ForgetCameras();
  EXPECT_EQ(recorder.Post("GetSnapshot", params).cause, "loginRefused");
  EXPECT_EQ(Logins(cameras, "camera"), logins) << "no token either";
}

// A camera that takes Basic leads into TLS: with the certificate of the port in its record it is the camera for sure.
TEST(StoredPassword, IsShownAtANamedPortThatHasTheCertificateOfItsOwn) {
  Proxy own;
  Proxy named;
  const std::string port = std::to_string(named.Port());
  const SimCameras cameras(List({Clip("camera", R"("tls": "too", "login": "basic", "fault": "redirectRtsp",
      "redirectTo": "rtsps://127.0.0.1:)" + port + "/stream1\"")}));
  const TestRecorder recorder;
  for (Proxy* proxy : {&own, &named}) proxy->LeadTo(cameras.Port("camera"));
  const std::string ownPlace = "127.0.0.1:" + std::to_string(own.Port()) + "/stream1";
  for (const bool isTls : {true, false}) {
    const Stored way{"camera", "User ", (isTls ? "rtsps://" : "rtsp://") + ownPlace};
    const int id = way.Add(recorder, own.Port());
    Json::Value params = way.Params(own.Port(), id);
    params["camVideoType"] = "H.264";
    for (int contact = 1; contact <= 2; ++contact) {
      EXPECT_EQ(CodeOf(recorder, "CameraTest", params), isTls ? 0 : 464) << contact << recorder.Log();
    }
    EXPECT_EQ(recorder.Log().find("it goes there by Digest only") == std::string::npos, isTls);
    EXPECT_EQ(recorder.Control({"camera", "remove", std::to_string(id)}).status, 0);
  }
}

// The camera's web services name a port for its stream, where a login is asked for by Basic.
TEST(StoredPassword, IsNotShownAtAPortThatTheCameraNames) {
  const Stored kWays[] = {{"token", "ONVIF Generic", ""}, {"http", "ONVIF Generic", ""}, {"psia", "PSIA Generic", ""}};
  const SimCameras cameras(List({Clip("token", R"("login": "basic", "onvif": {"login": "token"})"),
                                 Clip("http", R"("login": "basic", "onvif": {"login": "http"})"),
                                 Clip("psia", R"("login": "basic", "psia": {"channels": ["1"]})")}));
  const TestRecorder recorder;
  for (const Stored& way : kWays) {
    Proxy services;  // whose port is the one in the record
    services.LeadTo(cameras.Port(way.name));
    const int id = way.Add(recorder, services.Port());
    for (const std::string method : kCameraMethods) {
      SCOPED_TRACE(method + " " + way.name);
      recorder.ForgetCameras();
      Json::Value params = way.Params(services.Port(), id);
      params["camList"][0]["port"] = services.Port();
      CodeOf(recorder, method, params);
    }
    int describes = 0;
    const Json::Value log = cameras.Log(way.name);
    for (const Json::Value& request : log["requests"]) {
      if (request["protocol"] != "RTSP") continue;
      EXPECT_FALSE(request["login"].asBool()) << way.name << request;
      ++describes;
    }
    EXPECT_GT(describes, 0) << way.name << recorder.Log();
    EXPECT_GT(Logins(cameras, way.name), 0) << "the services took one";
  }
}

// Somebody else sits at the camera's address, or its firmware was set back.
TEST(StoredPassword, IsNotShownToACameraThatTookAStrongerLogin) {
  struct Fall {
    const char* from;
    const char* to;
    Stored camera;
  };
  const std::string md5 = R"("login": "digest-md5")";
  const std::string onvif = R"(, "onvif": {})";
  const std::map<std::string, std::string> configs = {
      {"basic", R"("login": "basic")"},
      {"md5", md5},
      {"sha256", R"("login": "digest-sha256")"},
      {"onvif basic", R"("login": "basic")" + onvif},
      {"onvif md5", md5 + onvif},
      {"onvif token", md5 + R"(, "onvif": {"login": "token"})"},
      {"psia basic", R"("login": "basic", "psia": {"channels": ["1"]})"},
      {"psia md5", md5 + R"(, "psia": {"channels": ["1"]})"},
  };
  const Fall kFalls[] = {
      {"md5", "basic", kStored[0]},
      {"sha256", "basic", kStored[0]},
      {"sha256", "md5", kStored[0]},
      {"md5", "basic", kStored[1]},
      {"sha256", "basic", kStored[1]},
      {"sha256", "md5", kStored[1]},
      {"md5", "basic", kStored[2]},
      {"sha256", "md5", kStored[2]},
      {"onvif md5", "onvif basic", kStored[3]},
      {"onvif token", "onvif basic", kStored[3]},
      {"psia md5", "psia basic", kStored[4]},
  };
  const SimCameras cameras(ListOf(configs, [](const auto& row) { return Clip(row.first, row.second); }));
  const TestRecorder recorder;
  for (const Fall& fall : kFalls) {
    SCOPED_TRACE(std::string(fall.from) + " to " + fall.to + ": " + fall.camera.model);
    Proxy address;
    const int id = fall.camera.Add(recorder, address.Port());
    const Json::Value params = fall.camera.Params(address.Port(), id);
    address.LeadTo(cameras.Port(fall.from));
    EXPECT_EQ(CodeOf(recorder, "CameraTest", params), 0) << recorder.Log();
    address.LeadTo(cameras.Port(fall.to));
    const int before = Logins(cameras, fall.to);
    for (const std::string method : kCameraMethods) {
      recorder.ForgetCameras();
      EXPECT_NE(CodeOf(recorder, method, params), 0) << method;
    }
    EXPECT_EQ(Logins(cameras, fall.to), before);
    EXPECT_THAT(recorder.Log(), testing::HasSubstr("camera edit " + std::to_string(id) + " --allow-basic"));
    EXPECT_EQ(recorder.Control({"camera", "edit", std::to_string(id), "--allow-basic"}).status, 0);
    const bool isAsked = std::string(fall.to).find(' ') != std::string::npos;  // and names another port for its stream
    EXPECT_EQ(CodeOf(recorder, isAsked ? "CamCapRemote" : "CameraTest", params), 0);
    EXPECT_EQ(recorder.Control({"camera", "remove", std::to_string(id)}).status, 0);
  }
}
