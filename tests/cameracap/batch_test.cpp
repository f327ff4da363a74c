#include <cerrno>
#include <sstream>

#include "platform/utility.h"
#include "tests/cameracap/request.h"

namespace {

Json::Value Camera(int number, const Params& replaced = {}) {
  const std::string text = std::to_string(number);
  const Params usual{{"tmpId", "t" + text}, {"name", "n" + text}, {"port", 80},
                     {"ip", "10.0.0.9"},    {"username", "root"}, {"vendor", "Acme"},
                     {"model", "X100"},     {"password", "pw"},   {"isAuth", false}};
  Json::Value camera;
  for (const auto& [key, value] : With(usual, replaced)) camera[key] = value;
  return camera;
}

Json::Value Cameras(int count) {
  Json::Value list{Json::arrayValue};
  for (int number = 1; number <= count; ++number) list.append(Camera(number));
  return list;
}

/// The answer to a list in short: "t1:0 t2:1/468".
std::string ResultsOf(const Json::Value& camList) {
  std::string results;
  const Json::Value answer = Send("CamBatAddVerify", {{"camList", camList}});
  for (const Json::Value& entry : answer["resultList"]) {
    results += (results.empty() ? "" : " ") + entry["tmpId"].asString() + ":" + entry["result"].asString();
    results += entry.isMember("errinfo") ? "/" + entry["errinfo"]["code"].asString() : "";
  }
  return results;
}

const std::string kAsk = Lines(kAdmitted + R"(GetParam("camList",null))");

/// The lines for workers `first` to `last`: all started, then all joined.
std::string Group(int first, int last) {
  std::string lines;
  for (const char* call : {"pthread_create #", "pthread_join #"}) {
    for (int worker = first; worker <= last; ++worker) lines += call + std::to_string(worker) + "\n";
  }
  return lines;
}

/// What the request thread did between reading and answering.
std::string Threads() { return Transcript().substr(kAsk.size(), Transcript().find("SetSuccess") - kAsk.size()); }

// The one camera of a list: the answer in short, then the worker's lines.
const std::string kLoad = R"(LoadCapability(1,"Acme","X100","1",""); GetDefaultChannel(); )";
const std::string kLoadOnvif = R"(LoadCapability(1,"ONVIF","X100","1",""); GetDefaultChannel()
  GetCamCapFile("10.0.0.9","root","pw","3","ONVIF","X100",80,0,0,"",0); )";
const std::string kUse =
    R"(LoadByParam(1,"10.0.0.9",80,"root","pw","Acme","X100","3",""); IsValid(); NeedsSourcePath(); )";
const std::string kCheck = "HasStreamPath(); VerifyConnection(); RetDevApiToRetCV(0)";
const std::vector<Row> kRows = {
    Row("OwnCheck", {}, "t1:0; " + kLoad + kUse + kCheck),
    Row("OwnCheckFails", {{"VerifyConnection", 9}, {"RetDevApiToRetCV", 8}},
        "t1:8/466; " + kLoad + kUse + "HasStreamPath(); VerifyConnection(); RetDevApiToRetCV(9)"),
    Row("StoredPassword", {{"password", gszFakePass}},
        "t1:0; " + kLoad + R"(GetCamRealPass(0,"Acme","X100","3")
        LoadByParam(1,"10.0.0.9",80,"root","secret","Acme","X100","3",""); IsValid(); NeedsSourcePath(); )" +
            kCheck),
    Row("PlaceholderThenNul", {{"password", gszFakePass + std::string("\0x", 2)}},
        "t1:0; " + kLoad + Swap(kUse, "\"pw\"", R"("********\u0000x")") + kCheck),
    Row("StreamPath", {{"HasStreamPath", true}},
        "t1:0; " + kLoad + kUse + R"(HasStreamPath(); GetStreamPath("",80); GetDefaultVideoType()
        GetStreamingTypeFor(5); CameraVerify("10.0.0.9",8554,"root","pw","/live",5,1,4); Verify(); ~CameraVerify)"),
    Row("NoStreamPath", {{"HasStreamPath", true}, {"GetStreamPath", -1}},
        "t1:1/468; " + kLoad + kUse + R"(HasStreamPath(); GetStreamPath("",80))"),
    Row("SkippedByText", {{"isAuth", "true"}}, "t1:0"),
    Row("SkippedByFlag", {{"isAuth", true}}, "t1:0"),
    Row("NotSkipped", {{"isAuth", "True"}, {"LoadCapability", 7}}, "t1:1/468; " + Until("LoadCapability", kLoad)),
    Row("NotSkippedByOne", {{"isAuth", "1"}, {"LoadCapability", 7}}, "t1:1/468; " + Until("LoadCapability", kLoad)),
    Row("HighestPort", {{"port", 65535}}, "t1:0; " + kLoad + Swap(kUse, ",80,", ",65535,") + kCheck),
    Row("NotValid", {{"IsValid", false}}, "t1:1/468; " + kLoad + Until("IsValid", kUse)),
    Row("NeedsSourcePath", {{"NeedsSourcePath", true}}, "t1:1/468; " + kLoad + kUse),
    Row("OnvifSubstituted", {{"vendor", "ONVIF"}, {"GetCamCapFile", 1}},
        "t1:0; " + kLoadOnvif + Swap(kUse, "Acme", "ONVIF") + kCheck),
    Row("OnvifLogin", {{"vendor", "ONVIF"}, {"GetCamCapFile", 4}}, "t1:6/464; " + kLoadOnvif),
    Row("OnvifUnreachable", {{"vendor", "ONVIF"}, {"GetCamCapFile", 2}}, "t1:1/468; " + kLoadOnvif),
};
struct BatchTest : RowTest {};
TEST_P(BatchTest, WorkerGoes) {
  const std::string results = ResultsOf(List(Camera(1, GetParam().given)));
  EXPECT_EQ(results + "\n" + Transcript(1), Lines(GetParam().expected));
  EXPECT_EQ(Threads(), Group(1, 1));
}
INSTANTIATE_TEST_SUITE_P(Way, BatchTest, testing::ValuesIn(kRows), kByName);

TEST_F(ModuleTest, RunsTenAtATimeAndAnswersInListOrder) {
  std::ostringstream expected;
  for (int worker = 1; worker <= 25; ++worker) {
    Script("RetDevApiToRetCV@" + std::to_string(worker), {worker});
    const int code = worker >= 4 && worker <= 8 ? 458 + worker : worker == 15 ? 467 : 468;
    expected << (worker == 1 ? "t" : " t") << worker << ":" << worker << "/" << code;
  }
  EXPECT_EQ(ResultsOf(Cameras(25)), expected.str());
  EXPECT_EQ(Threads(), Group(1, 10) + Group(11, 20) + Group(21, 25));
}

TEST_F(ModuleTest, BatchAnswerHasNoOtherMembersAndMissingOnesAreEmpty) {
  Json::Value camera{Json::objectValue};
  camera["tmpId"] = 5;
  Script("RetDevApiToRetCV@1", {-1});
  Send("CamBatAddVerify", {{"camList", List(camera, Camera(2))}});
  const std::string entries = R"({"errinfo":{"code":468},"name":"","result":-1,"tmpId":"5"},)"
                              R"({"name":"n2","result":0,"tmpId":"t2"})";
  EXPECT_EQ(Transcript(), kAsk + Group(1, 2) + "SetSuccess({\"resultList\":[" + entries + "]})\n");
  EXPECT_NE(Transcript(1).find(R"(LoadByParam(1,"",0,"","","","","3",""))"), std::string::npos);
}

TEST_F(ModuleTest, BatchNeedsAListWithRows) {
  const std::string expected = kAsk + Lines(R"(
    log("cameracap:832","HandleCamBatchAddVerify","Failed to parse cam list.\n"); )" +
                                            Error(400));
  for (const Json::Value& camList : {Json::Value(), List(), Json::Value("list"), Camera(1)}) {
    Reset();
    Send("CamBatAddVerify", {{"camList", camList}});
    EXPECT_EQ(Transcript(), expected);
  }
}

TEST_F(ModuleTest, UnreadableRowsHaveAnEntryButNoWorkerAndTakeNoPlaceAmongTheTen) {
  Json::Value list = Cameras(15);
  list[2] = "no object";
  list[5] = Json::Value();
  list[7]["port"] = "eighty";
  list[8]["name"] = List("no", "name");
  list[14]["tmpId"] = Json::Value(Json::objectValue);
  EXPECT_EQ(ResultsOf(list),
            "t1:0 t2:0 :1/468 t4:0 t5:0 :1/468 t7:0 t8:1/468 t9:1/468 t10:0 t11:0 t12:0 t13:0 t14:0 :1/468");
  EXPECT_EQ(Threads(), Group(1, 10));
  EXPECT_NE(Transcript().find(R"("name":"n8")"), std::string::npos);
  EXPECT_EQ(ResultsOf(List(1, 2)), ":1/468 :1/468");
  for (const char* key : {"ip", "username", "vendor", "model", "password", "isAuth"}) {
    EXPECT_EQ(ResultsOf(List(Camera(1, {{key, List("no", "text")}}))), "t1:1/468") << key;
  }
}

TEST_F(ModuleTest, WorkersThatDoNotStartOrJoinHaveNoEntry) {
  Script("pthread_create #2", {kFails});
  Script("pthread_join #3", {kFails});
  Script("pthread_create #5", {kFails});  // the last row: the others are joined all the same
  const std::string model(64, 'm');
  Json::Value list = Cameras(5);
  list[2]["model"] = model;
  EXPECT_EQ(ResultsOf(list), "t1:0 t4:0");
  const std::string noThread = R"(log("cameracap:855","HandleCamBatchAddVerify","Failed to create thread\n"); )";
  const std::string noJoin = R"(log("cameracap:872","HandleCamBatchAddVerify","Failed to join thread 103. (errno=)" +
                             std::to_string(EDEADLK) + R"()\n"); )";
  EXPECT_EQ(Threads(), Lines("pthread_create #1; pthread_create #2; " + noThread +
                             "pthread_create #3; pthread_create #4; pthread_create #5; " + noThread +
                             "pthread_join #1; pthread_join #3; " + noJoin + "pthread_join #4"));

  EXPECT_TRUE(Finish().empty());  // worker 3 runs only now, and still has its record
  EXPECT_EQ(Transcript(3), Lines(Swap(kLoad + kUse + kCheck, "X100", model)));

  Script("pthread_create #1", {kFails});
  EXPECT_EQ(ResultsOf(Cameras(1)), "");  // a success all the same
  EXPECT_NE(Transcript().find(R"(SetSuccess({"resultList":[]}))"), std::string::npos);
}

}  // namespace
