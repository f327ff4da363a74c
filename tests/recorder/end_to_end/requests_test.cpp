#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "rig/recorder.h"

using namespace rig;

namespace {

constexpr char kForm[] = "application/x-www-form-urlencoded";
constexpr char kJson[] = "application/json";

struct RequestCase {
  const char* name;
  const char* verb;
  const char* path;  ///< behind the API's prefix, or whole when it starts with a slash
  Headers headers;
  std::string body;
  const char* contentType;
  int status;
  const char* bodyHolds;
};

const Headers kForeign = {{"Sec-Fetch-Site", "cross-site"}};

const RequestCase kRequestCases[] = {
    {"UnknownApi", "GET", "/api/Nobody.Knows/1/CamCap", {}, "", "", 404, "unknown API"},
    {"UnknownVersion", "GET", "/api/NORV.Vistrel.CameraCap/2/CamCap", {}, "", "", 404, "unknown version"},
    {"ShortAddress", "GET", "/api/CamCap", {}, "", "", 404, "the address must be"},
    {"GetOfACameraMethod", "GET", "CameraTest?camIP=127.0.0.1", {}, "", "", 405, "only POST"},
    {"Put", "PUT", "CamCap", {}, "{}", kJson, 405, "only GET and POST"},
    {"ListByForm", "POST", "CamCap", {}, "vendor=User&model=a%20b+c", kForm, 200, "User Define"},
    {"MalformedJson", "POST", "CamCap", {}, R"({"vendor": )", kJson, 400, "must be a JSON object"},
    {"JsonTooDeep", "POST", "CamCap", {}, std::string(5000, '['), kJson, 400, "must be a JSON object"},
    {"JsonIsNoObject", "POST", "CamCap", {}, "[]", kJson, 400, "must be a JSON object"},
    {"KeyTwice", "POST", "CamCap", {}, "vendor=User&vendor=x", kForm, 400, "vendor"},
    {"LargestList", "POST", "CamBatAddVerify", {}, std::string(1'048'576, ' '), kJson, 400, "must be a JSON object"},
    {"ListTooLarge", "POST", "CamBatAddVerify", {}, std::string(1'048'577, ' '), kJson, 413, "1 MiB for a list"},
    {"PortTooLarge", "POST", "CameraTest", {}, "camPort=99999999999", kForm, 400, R"("parameter":"camPort")"},
    {"PortWithZero", "POST", "CameraTest", {}, "camPort=080", kForm, 400, R"("parameter":"camPort")"},
    {"ForeignOrigin", "GET", "CamCap", {{"Origin", "http://elsewhere.example"}}, "", "", 403, "Origin"},
    {"ForeignFetch", "GET", "CamCap", kForeign, "", "", 403, "Sec-Fetch-Site"},
    {"ForeignFetchOfOwn", "GET", "/recorder/1/models", kForeign, "", "", 403, "Sec-Fetch-Site"},
    {"PutOfOwn", "PUT", "/recorder/1/models", {}, "", "", 405, "only GET"},
    {"UnknownOwn", "GET", "/recorder/1/model", {}, "", "", 404, "no such address"},
    {"OtherVersionOfOwn", "GET", "/recorder/2/models", {}, "", "", 404, "no such address"},
    {"ForeignHost", "GET", "CamCap", {{"Host", "elsewhere.example"}}, "", "", 403, "Host"},
};

struct CallCase {
  const char* name;
  std::vector<std::string> arguments;
  std::string input;
  int status;
  const char* outputHolds;
};

const CallCase kCallCases[] = {
    {"Success", {"CamCap", "vendor=User"}, "", 0, "User Define"},
    {"ErrorAnswer", {"CamCap", "vendor=Nobody"}, "", 1, "400"},
    {"CauseOfAnError", {"CameraTest", "camModel=Nobody x"}, "", 1, "cause: unknownModel"},
    {"SecretOnTheCommandLine", {"CameraTest", "camPassWord=x"}, "", 2, "--json"},
    {"SecretByInput",
     {"CamBatAddVerify", "--json", "-"},
     R"({"camList": [{"isAuth": true, "tmpId": "a"}, {"isAuth": true, "tmpId": "b"}]})",
     0,
     "tmpId"},
    {"UnknownMethod", {"Nothing"}, "", 2, "no method"},
    {"UnconvertedValue", {"CameraTest", "camPort=x"}, "", 2, "camPort"},
};

}  // namespace

TEST(Requests, GetTheirStatusAndSayWhy) {
  const TestRecorder recorder;
  for (const RequestCase& row : kRequestCases) {
    SCOPED_TRACE(row.name);
    Headers headers = recorder.Login();
    headers.insert(row.headers.begin(), row.headers.end());
    if (!row.body.empty()) headers.emplace("Content-Type", row.contentType);
    const std::string path = row.path[0] == '/' ? row.path : std::string(kApi) + row.path;
    const Answer answer = recorder.Send(row.verb, path, headers, row.body);
    EXPECT_EQ(answer.status, row.status) << answer.body;
    EXPECT_EQ(answer.contentType, "application/json");
    EXPECT_THAT(answer.body, testing::HasSubstr(row.bodyHolds));
  }
}

TEST(Server, TellsNeitherItsVersionNorHowThePageIsMade) {
  const TestRecorder recorder({.pageFolder = SOURCE_FOLDER "/page"});
  const std::pair<const char*, int> paths[] = {{"/", 200},          {"/main.js", 200},       {"/openapi.yaml", 200},
                                               {"/README.md", 403}, {"/tsconfig.json", 403}, {"/api/", 401},
                                               {"/main.js/x", 403}};
  for (const auto& [path, status] : paths) {
    const Answer answer = recorder.Send("GET", path, {});
    EXPECT_EQ(answer.status, status) << path;
    EXPECT_EQ(HeaderOf(answer.head, "Server"), "");
  }
}

TEST(Models, TellWhoSaysWhatAndWhereTheirStreamsAre) {
  const TempFolder models;
  std::filesystem::copy_file(SOURCE_FOLDER "/models/schema.json", models.Path() / "schema.json");
  models.Write("acme.json", R"({"vendor": "Acme", "sources": {"guide": {"document": "Guide", "by": "document"},
      "list": {"document": "List", "by": "reported"}}, "models": [{"name": "X/1", "from": "list", "streams": 0,
      "facts": {"codecs": "guide"}, "channels": {"values": ["1", "2"], "default": "1"},
      "codecs": [{"name": "H.264", "streamTypes": ["RTSP"]}], "snapshot": {"kind": "stream"}, "check": "stream",
      "stream": {"path": "/ch{channel0}", "others": [{"stream": "sub", "path": "/low{channel}", "port": 8554}]}}]})");
  const TestRecorder recorder({.modelsFolder = models.Path()});
  const auto get = [&](const std::string& path) {
    return recorder.Ask("GET", "/recorder/1/models" + path, recorder.Login());
  };
  const Reply list = get("");
  EXPECT_THAT(list.body, testing::HasSubstr(R"({"by":{"document":1,"reported":3},"model":"X/1","origin":"shipped",)"
                                            R"("streams":["main","sub"],"vendor":"Acme"})"));
  EXPECT_EQ(HeaderOf(list.head, "Cache-Control"), "private, no-cache");
  Headers known = recorder.Login();
  known.emplace("If-None-Match", "\"old\", W/" + HeaderOf(list.head, "ETag"));
  const Connection again(recorder.Port(), std::chrono::seconds(60));
  again.Send(HttpRequest("GET", "/recorder/1/models", known));
  std::string unchanged;
  again.Receive(unchanged);
  EXPECT_THAT(unchanged, testing::StartsWith("HTTP/1.1 304 "));

  const Json::Value data = ParseJson(get("/Acme/X%2F1?channel=2&host=cam").body)["data"];
  EXPECT_EQ(data["facts"][1]["value"][0]["name"], "H.264");
  EXPECT_EQ(data["facts"][1]["document"], "Guide");
  EXPECT_EQ(data["streams"][0]["path"], "/ch1");
  EXPECT_EQ(data["streams"][1]["address"], "rtsp://cam:8554/low2");
  EXPECT_EQ(data["streams"][1]["source"]["by"], "reported");
  EXPECT_THAT(get("/acme/X2").body, testing::HasSubstr(R"("nearest":[{"model":"X/1","vendor":"Acme"})"));
}

TEST(CommandLineCalls, ExitWithTheirStatus) {
  const TestRecorder recorder;
  for (const CallCase& row : kCallCases) {
    SCOPED_TRACE(row.name);
    std::vector<std::string> arguments = row.arguments;
    arguments.insert(arguments.begin(), "call");
    const Finished call = recorder.Control(arguments, row.input);
    EXPECT_EQ(call.status, row.status) << call.output;
    EXPECT_THAT(call.output, testing::HasSubstr(row.outputHolds));
    EXPECT_FALSE(row.status == 0 && call.output.find("cause:") != std::string::npos) << call.output;
  }
}

TEST(CommandLineCalls, FailWithTheDefaultPicture) {
  const TestRecorder recorder({.testMs = 1000, .pictureMs = 1000, .workers = 2});
  const TempFolder folder;
  const std::string file = (folder.Path() / "picture").string();
  for (const char* kind : {"jsonResponse=false", "jsonResponse=true"}) {
    const Finished call = recorder.Control({"call", "GetSnapshot", "camModel=Nobody x", kind, "-o", file});
    EXPECT_EQ(call.status, 1);
    EXPECT_THAT(call.output,
                testing::AllOf(testing::HasSubstr("cause: unknownModel"), testing::Not(testing::HasSubstr("success"))));
  }
  EXPECT_FALSE(std::filesystem::exists(file));
}

TEST(Modules, ThatLackSomethingAreRefusedByName) {
  const std::pair<std::string, const char*> cases[] = {
      {"/no/module.so", "module: is no file"},
      {SOURCE_FOLDER "/README.md", "cannot load the module"},
  };
  for (const auto& [module, mistake] : cases) {
    const TempFolder folder;
    Json::Value config;
    config["stateFolder"] = "state";
    config["modelsFolder"] = config["workFolder"] = SOURCE_FOLDER "/models";
    config["module"] = module;
    const Finished serve = rig::Run("recorderctl", {"--config", folder.Write("config.json", ToText(config)), "serve"});
    EXPECT_EQ(serve.status, 1);
    EXPECT_THAT(serve.output, testing::HasSubstr(mistake));
  }
}
