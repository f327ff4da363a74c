#include "rig/cameras.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <future>
#include <thread>

#include "recorder/records/records.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/file_lock.h"
#include "tests/recorder/end_to_end/expect.h"

// Stored cameras over HTTP: a password goes in once and never comes out.

using namespace rig;

using testing::HasSubstr;
using testing::Not;

namespace {

constexpr char kCamerasPath[] = "/recorder/1/cameras";

Json::Value Simulated() {
  return List({Camera("two", ParseJson(R"({"server": "scripted", "stream": [
                   {"path": "/stream1", "source": "clip", "fps": 10, "gop": 10},
                   {"path": "/stream2", "source": "clip", "fps": 10, "gop": 10, "width": 320, "height": 240}]})")),
               Faulty("silent", "silentAfterConnect")});
}

class Cameras : public testing::Test {
 protected:
  Reply Ask(const std::string& verb, const std::string& path, const Json::Value& body = {}, Headers more = {}) const {
    more.merge(recorder_.Login());
    return recorder_.Ask(verb, kCamerasPath + path, more, body.isNull() ? "" : ToText(body));
  }

  Answer Send(const std::string& verb, const std::string& path, const Json::Value& body = {},
              const Headers& more = {}) const {
    return Answer(Ask(verb, path, body, more));
  }

  Answer Patch(const char* change, const std::string& ifMatch = "*") const {
    return Send("PATCH", "/1", ParseJson(change), {{"If-Match", ifMatch}});
  }

  /// A camera with a second stream.
  Json::Value Fields(const std::string& simulated = "two") const {
    const std::string port = std::to_string(cameras_.Port(simulated));
    Json::Value fields =
        ParseJson(R"({"name": "yard", "vendor": "user", "host": "127.0.0.1", "user": "admin", "port": )" + port +
                  R"(, "sourcePath": "/stream1", "streams": [{"name": "sub", "vendor": "User",
        "address": "rtsp://127.0.0.1:554/stream2?a=1@2", "sourcePath": "/stream2", "port": )" +
                  port +
                  R"(}], "facts": [{"name": "maker", "value": "Acme", "from": "ONVIF"},
        {"name": "model", "value": "X1", "from": "ONVIF"}]})");
    fields["password"] = kSecret;
    return fields;
  }

  void Add() const { ASSERT_EQ(Send("POST", "", Fields()).status, 201); }

  int Refused() const { return cameras_.Log("two")["refusedLogins"].asInt(); }

  const SimCameras cameras_{Simulated()};
  const TestRecorder recorder_{{.testMs = 1500, .pictureMs = 1500, .workers = 1}};
};

std::string CauseOf(const Answer& answer) { return answer.json["error"]["cause"].asString(); }

TEST_F(Cameras, AreStoredRemovedAndRestoredAndNeverTellTheirPassword) {
  const Answer added = Send("POST", "", Fields());
  EXPECT_EQ(added.status, 201) << added.body;
  EXPECT_EQ(HeaderOf(added.head, "ETag"), "\"1\"");
  const Json::Value camera = added.json["data"];
  EXPECT_EQ(camera["vendor"], "User") << "by the recorder's own name";
  EXPECT_TRUE(camera["hasPassword"].asBool());
  EXPECT_THAT(camera["streams"][0]["address"].asString(), HasSubstr("rtsp://127.0.0.1:"));
  EXPECT_EQ(camera["streams"][1]["sourcePath"], "/stream2");
  EXPECT_EQ(camera["facts"][1]["value"], "X1");

  const Answer list = Send("GET", "");
  EXPECT_EQ(list.json["data"][0]["streams"], ParseJson(R"(["main", "sub"])"));
  EXPECT_EQ(HeaderOf(list.head, "Cache-Control"), "no-store");
  const Answer twice = Send("POST", "", Fields());
  EXPECT_EQ(twice.status, 409);
  EXPECT_EQ(twice.json["error"]["camera"]["id"], 1);

  EXPECT_EQ(Send("DELETE", "/1", {}, {{"If-Match", "\"2\""}}).status, 412);
  EXPECT_EQ(Send("DELETE", "/1").status, 200);
  EXPECT_EQ(Send("GET", "/1").status, 404);
  EXPECT_EQ(Send("POST", "/1/restore").json["data"], camera);
  EXPECT_EQ(Send("POST", "/1/restore").status, 404);
  EXPECT_EQ(Send("DELETE", "/1").status, 200);
  EXPECT_EQ(CountAtOnce(6, 201, [&](int) { return Send("POST", "", Fields()).status; }), 1);
  EXPECT_EQ(Send("POST", "/1/restore").json["error"]["camera"]["id"], 2);
  EXPECT_EQ(Send("DELETE", "/2").status, 200);
  EXPECT_EQ(Send("POST", "/1/restore").status, 200);
  EXPECT_EQ(recorder_.AddCamera("User", "", cameras_.Port("two"), "admin", "x", "1", "/live?user=a&password=hidden"),
            3);
  const std::pair<const char*, const char*> addresses[] = {
      {"/video.mjpg", ""}, {"httpstream/1", "rtsp://"}, {"http://127.0.0.1/x", "http://"}};
  for (const auto& [path, scheme] : addresses) {
    const std::string id = std::to_string(recorder_.AddCamera("User", "", 9999, "admin", "x", "", path));
    const std::string address = Send("GET", "/" + id).json["data"]["streams"][0]["address"].asString();
    EXPECT_EQ(address.substr(0, 7), scheme) << path;
    EXPECT_EQ(Send("POST", "/" + id + "/measure").status, std::string(path).starts_with("http:") ? 409 : 502);
  }
  const int odd = recorder_.AddCamera("User", "", 9998, "admin", "w0rd!", "", "/live/w0rd%21?x=1");
  const Answer guess =
      Patch(R"({"streams": [{"name": "main", "address": "rtsp://127.0.0.1:554/s3cret, with \"quotes\" & blanks"}]})");
  EXPECT_THAT(guess.json["data"]["streams"][0]["address"].asString(), HasSubstr(kSecret)) << "it tells no guess apart";
  const std::string told = added.body + Send("GET", "").body + Send("GET", "/3").body +
                           Send("GET", "/" + std::to_string(odd)).body + recorder_.Log();
  for (const char* secret : {"s3cret", "hidden", "w0rd"}) EXPECT_THAT(told, Not(HasSubstr(secret)));
}

struct MistakeCase {
  const char* change;  ///< of a camera
  int status;
  const char* member;
};

const MistakeCase kMistakes[] = {
    {R"({"name": ""})", 400, "name"},
    {R"({"nme": "x"})", 400, "nme"},
    {R"({"port": 70000})", 400, "port"},
    {R"({"port": "80"})", 400, "port"},
    {R"({"enabled": 1})", 400, "enabled"},
    {R"({"vendor": "Axs"})", 400, "model"},
    {R"({"password": 5})", 400, "password"},
    {R"({"sourcePath": "rtsp://a:b@127.0.0.1/x"})", 400, "sourcePath"},
    {R"({"sourcePath": "/x?user=a&password=b"})", 400, "sourcePath"},
    {R"({"streams": [{"name": "fourth", "vendor": "User", "port": 1}]})", 400, "streams"},
    {R"({"streams": [{"name": "sub", "address": "rtsp://a:b@127.0.0.1/x", "vendor": "User", "port": 1}]})", 400,
     "streams"},
    {R"({"streams": [{"name": "sub", "address": "rtsp://192.0.2.1/x", "vendor": "User", "port": 1}]})", 400, "streams"},
    {R"({"streams": [{"name": "sub", "vendor": "Axs", "port": 1}]})", 400, "streams"},
    {R"({"facts": [{"name": "a", "value": "b"}]})", 400, "facts"},
    {R"({"facts": [{"name": "a", "value": "b", "from": "c", "stream": "d"}]})", 400, "facts"},
    {R"({"facts": [{"name": "a", "value": "b", "from": "c", "by": "d"}]})", 400, "facts"},
};

TEST_F(Cameras, MistakesNameTheirMember) {
  Add();
  const Json::Value before = Send("GET", "/1").json["data"];
  for (const MistakeCase& row : kMistakes) {
    SCOPED_TRACE(row.change);
    Json::Value fields = Fields();
    const Json::Value change = ParseJson(row.change);
    fields[change.getMemberNames()[0]] = change[change.getMemberNames()[0]];
    for (const Answer& answer : {Send("POST", "", fields), Patch(row.change)}) {
      EXPECT_EQ(answer.status, row.status) << answer.body;
      EXPECT_EQ(answer.json["error"]["member"], row.member) << answer.body;
    }
  }
  EXPECT_EQ(Patch(R"({"vendor": "Axs"})").json["error"]["nearest"][0]["vendor"], "Axis");
  EXPECT_EQ(Patch(R"({"host": "127.0.0.2"})").json["error"]["member"], "password");
  EXPECT_EQ(Patch(R"({"streams": [{"name": "third", "vendor": "User", "port": 1, "sourcePath": "/x"}]})")
                .json["error"]["member"],
            "password");
  EXPECT_EQ(Send("GET", "/1").json["data"], before);
}

TEST_F(Cameras, AreChangedByWhoeverKnowsThemAsTheyAre) {
  Add();
  const std::pair<const char*, int> tags[] = {{"", 428},      {"\"7\"", 412},        {"W/\"1\"", 412}, {"1", 400},
                                              {"\"1\"", 200}, {"\"1\", \"2\"", 200}, {"*", 200}};
  for (const auto& [tag, status] : tags) EXPECT_EQ(Patch(R"({"name": "gate"})", tag).status, status) << tag;
  EXPECT_EQ(Patch(R"({"force": true})").status, 400) << "it changes nothing";
  Json::Value fields = Fields();
  fields["allowBasic"] = true;
  EXPECT_EQ(Send("POST", "", fields).json["error"]["member"], "allowBasic");
  const std::string tag = HeaderOf(Send("GET", "/1").head, "ETag");
  EXPECT_EQ(CountAtOnce(8, 200, [&](int) { return Patch(R"({"name": "hall"})", tag).status; }), 1);
}

TEST_F(Cameras, AreTestedAndShownByTheirStoredPassword) {
  Add();
  EXPECT_EQ(Send("POST", "/1/test").json["data"]["cause"], "ok");
  const Reply main = Ask("GET", "/1/picture");
  const Reply sub = Ask("GET", "/1/picture?stream=sub");
  for (const Reply& picture : {main, sub}) {
    EXPECT_EQ(picture.contentType, "image/jpeg");
    EXPECT_TRUE(IsJpeg(picture.body));
  }
  EXPECT_LT(sub.body.size(), main.body.size());
  EXPECT_EQ(Send("GET", "/1/picture?stream=third").status, 404);
  EXPECT_EQ(Send("GET", "/1").json["data"]["state"]["cause"], "ok");

  EXPECT_EQ(Send("POST", "/1/measure?stream=sub").json["data"]["width"], 320);
  EXPECT_THAT(Send("GET", "/1").body, HasSubstr(R"("from":"measured","name":"size","stream":"sub","value":"320x240")"));
  const Answer model = Send("GET", "/1/model");
  EXPECT_THAT(model.json["data"]["file"].asString(), HasSubstr("/stream1")) << model.body;
  EXPECT_THAT(model.body, Not(HasSubstr("127.0.0.1")));
  EXPECT_THAT(Send("GET", "/1/model?model=2100&vendor=Acme").body, HasSubstr("2100"));
}

TEST_F(Cameras, ThatRefusedTheirLoginAreAskedAgainOnlyByWish) {
  Add();
  EXPECT_EQ(Patch(R"({"password": "wrong"})").status, 200);
  EXPECT_EQ(CauseOf(Send("GET", "/1/picture")), "loginRefused");
  const Answer again = Send("GET", "/1/picture?stream=sub");
  EXPECT_EQ(CauseOf(again), "loginRefused");
  EXPECT_TRUE(again.json["error"]["remembered"].asBool());
  EXPECT_EQ(Refused(), 1);
  Json::Value channel = Fields();
  channel["sourcePath"] = "/stream2";
  EXPECT_EQ(Send("POST", "", channel).status, 201);
  EXPECT_TRUE(Send("GET", "/2/picture").json["error"]["remembered"].asBool()) << "of another channel";
  EXPECT_EQ(Refused(), 1);
  EXPECT_EQ(CauseOf(Send("GET", "/1/picture?again=true")), "loginRefused");
  EXPECT_EQ(Refused(), 2);
  EXPECT_EQ(Send("POST", "/1/test").json["error"]["module"], 464);
  Json::Value right;
  right["password"] = kSecret;
  EXPECT_EQ(Patch(ToText(right).c_str()).status, 200);
  EXPECT_EQ(Ask("GET", "/1/picture").status, 200);
}

TEST_F(Cameras, ThatRefuseTheirLoginAreAskedOnceByManyAtOnce) {
  for (const bool hasWorked : {false, true}) {
    const TestRecorder recorder{{.pictureMs = 3000, .workers = 4}};
    const int id = recorder.AddCamera("User", "", cameras_.Port("two"), "admin", "x", "", "/stream1");
    if (hasWorked) {
      recorder::Records(recorder.StateFolder()).NoteOutcome(id, {recorder::Outcome::kOk, recorder::SecondsNow()});
    }
    const int before = Refused();
    const std::string path = std::string(kCamerasPath) + "/" + std::to_string(id) + "/picture";
    EXPECT_EQ(CountAtOnce(4, 502, [&](int) { return recorder.Ask("GET", path, recorder.Login(), "").status; }), 4);
    EXPECT_EQ(Refused() - before, 1) << hasWorked;
  }
}

TEST_F(Cameras, AreJudgedByTheirMainStream) {
  Json::Value fields = Fields();
  fields["streams"][0]["sourcePath"] = "/nosuch";
  fields["facts"] = Json::Value(Json::arrayValue);
  for (int i = 0; i < 64; ++i) {
    fields["facts"].append(
        ParseJson(R"({"name": "n)" + std::to_string(i) + R"(", "value": "v", "from": "f", "at": 9})"));
  }
  ASSERT_EQ(Send("POST", "", fields).status, 201);
  EXPECT_EQ(Ask("GET", "/1/picture").status, 200);
  for (const char* path : {"/1/picture?stream=sub", "/1/measure?stream=sub"}) {
    EXPECT_EQ(CauseOf(Send(std::string(path).starts_with("/1/measure") ? "POST" : "GET", path)), "noSuchStream");
    EXPECT_EQ(Send("GET", "/1").json["data"]["state"]["cause"], "ok");
  }
  EXPECT_EQ(Send("POST", "/1/measure").status, 200);
  EXPECT_THAT(Send("GET", "/1").body, HasSubstr("\"from\":\"measured\"")) << "in place of the oldest";
  std::future<Answer> measured = std::async(std::launch::async, [&] { return Send("POST", "/1/measure"); });
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  Json::Value change;
  change["sourcePath"] = "/stream2";
  change["password"] = kSecret;
  EXPECT_EQ(Patch(ToText(change).c_str()).status, 200);
  EXPECT_EQ(measured.get().status, 200);
  const Json::Value camera = Send("GET", "/1").json["data"];
  EXPECT_TRUE(camera["state"].isNull());
  EXPECT_THAT(ToText(camera), Not(HasSubstr("measured"))) << "of another stream";
}

TEST_F(Cameras, WhosePasswordCannotBeReadAreNotSaidToRefuseIt) {
  Add();
  recorder_.AddCamera("User", "", 9999, "admin", "x", "", "/live/gate-2x");
  std::filesystem::remove(recorder_.StateFolder() / "secret.key");
  EXPECT_EQ(Send("GET", "/2").json["data"]["sourcePath"], "/live/gate-2x") << "an edit would send back what is hidden";
  EXPECT_EQ(CauseOf(Send("POST", "/1/test")), "recorderFailed");
  EXPECT_EQ(CauseOf(Send("GET", "/1/picture")), "recorderFailed");
  EXPECT_EQ(CauseOf(Send("POST", "/1/measure")), "recorderFailed");
  EXPECT_TRUE(Send("GET", "/1").json["data"]["state"].isNull());
}

TEST_F(Cameras, ThatAreSwitchedOffOrSilentAreNamed) {
  Add();
  EXPECT_EQ(Patch(R"({"enabled": false})").status, 200);
  for (const char* path : {"/1/test", "/1/picture", "/1/measure"}) {
    const Answer answer = Send(std::string(path) == "/1/picture" ? "GET" : "POST", path);
    EXPECT_EQ(answer.status, 409);
    EXPECT_EQ(CauseOf(answer), "disabled");
  }
  EXPECT_EQ(cameras_.Log("two")["connections"], 0);

  ASSERT_EQ(Send("POST", "", Fields("silent")).status, 201);
  const recorder::FileDescriptor locks = recorder::OpenLocks(recorder_.StateFolder() / "logins.lock");
  ASSERT_TRUE(recorder::TryLock(locks, F_WRLCK));
  EXPECT_EQ(Ask("GET", "/2/picture").status, 503) << "another one has its turn all the time";
  ASSERT_TRUE(recorder::TryLock(locks, F_UNLCK));
  Connection(recorder_.Port(), std::chrono::seconds(60))
      .Send(HttpRequest("GET", std::string(kCamerasPath) + "/2/picture", recorder_.Login()));
  const recorder::FileDescriptor turns = recorder::OpenLocks(recorder_.StateFolder() / "contacts.lock");
  for (int tries = 0; tries < 500 && !recorder::IsLocked(turns); ++tries) usleep(10'000);
  EXPECT_TRUE(recorder::IsLocked(turns)) << "recorder-watch leaves it alone";
  EXPECT_EQ(CauseOf(Send("POST", "/2/test")), "timedOut") << "after somebody who has gone";
  EXPECT_EQ(Send("GET", "").json["data"][1]["state"]["cause"], "timedOut");
}

}  // namespace
