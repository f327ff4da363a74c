#include <cerrno>

#include "platform/utility.h"
#include "tests/cameracap/request.h"

using scripted::FailJoin;
using scripted::FailStart;
using scripted::kNoWrapper;
using scripted::ScriptWorker;

namespace {

Json::Value Camera(int number, const Params& replaced = {}) {
  const std::string text = std::to_string(number);
  Json::Value camera;
  for (const auto& [key, value] : With({{"tmpId", "t" + text},
                                        {"name", "n" + text},
                                        {"port", 80},
                                        {"ip", "10.0.0." + text},
                                        {"username", "root"},
                                        {"vendor", "Acme"},
                                        {"model", "X100"},
                                        {"password", "pw"},
                                        {"isAuth", false}},
                                       replaced)) {
    camera[key] = value;
  }
  return camera;
}

Json::Value Cameras(int count) {
  Json::Value list{Json::arrayValue};
  for (int number = 1; number <= count; ++number) list.append(Camera(number));
  return list;
}

/// What a request starts and joins, from worker `first` to `last`.
std::string Group(int first, int last) {
  std::string starts;
  std::string joins;
  for (int worker = first; worker <= last; ++worker) {
    starts += "pthread_create #" + std::to_string(worker) + "\n";
    joins += "pthread_join #" + std::to_string(worker) + "\n";
  }
  return starts + joins;
}

/// The answer in short: "t1:0 t2:1/468".
std::string Results(const Json::Value& answer) {
  std::string results;
  for (const Json::Value& entry : answer["resultList"]) {
    results += (results.empty() ? "" : " ") + entry["tmpId"].asString() + ":" + entry["result"].asString();
    if (entry.isMember("errinfo")) results += "/" + entry["errinfo"]["code"].asString();
  }
  return results;
}

struct WorkerRow {
  const char* name;
  Params camera;
  Params answers;
  const char* results;
  std::string expected;  ///< the worker's lines
};
const WorkerRow kWorkerRows[] = {
    {"StreamPath", {}, {{"HasStreamPath", true}}, "t1:0", R"(
        LoadCapability(1, "Acme", "X100", "1", ""); GetDefaultChannel()
        LoadByParam(1, "10.0.0.1", 80, "root", "pw", "Acme", "X100", "3", ""); IsValid(); NeedsSourcePath()
        HasStreamPath(); GetStreamPath("", 80); GetDefaultVideoType(); GetStreamingTypeFor(3)
        CameraVerify("10.0.0.1", 8554, "root", "pw", "/live", 3, 2, 4); Verify(); ~CameraVerify)"},
    {"NoStreamPath", {}, {{"HasStreamPath", true}, {"GetStreamPath", -1}}, "t1:1/468", R"(
        LoadCapability(1, "Acme", "X100", "1", ""); GetDefaultChannel()
        LoadByParam(1, "10.0.0.1", 80, "root", "pw", "Acme", "X100", "3", ""); IsValid(); NeedsSourcePath()
        HasStreamPath(); GetStreamPath("", 80))"},
    {"OwnCheckWithStoredPassword",
     {{"password", gszFakePass}},
     {{"VerifyConnection", 9}, {"RetDevApiToRetCV", 8}},
     "t1:8/466",
     R"(
        LoadCapability(1, "Acme", "X100", "1", ""); GetDefaultChannel(); GetCamRealPass(0, "Acme", "X100", "3")
        LoadByParam(1, "10.0.0.1", 80, "root", "secret", "Acme", "X100", "3", ""); IsValid(); NeedsSourcePath()
        HasStreamPath(); VerifyConnection(); RetDevApiToRetCV(9))"},
    {"SkippedByText", {{"isAuth", "true"}}, {}, "t1:0", ""},
    {"SkippedByFlag", {{"isAuth", true}}, {}, "t1:0", ""},
    {"NotSkipped", {{"isAuth", "True"}}, {{"LoadCapability", 7}}, "t1:1/468", R"(
        LoadCapability(1, "Acme", "X100", "1", ""))"},
    {"NotSkippedByOne", {{"isAuth", 1}}, {{"LoadCapability", 7}}, "t1:1/468", R"(
        LoadCapability(1, "Acme", "X100", "1", ""))"},
    {"NeedsSourcePath", {}, {{"NeedsSourcePath", true}}, "t1:1/468", R"(
        LoadCapability(1, "Acme", "X100", "1", ""); GetDefaultChannel()
        LoadByParam(1, "10.0.0.1", 80, "root", "pw", "Acme", "X100", "3", ""); IsValid(); NeedsSourcePath())"},
    {"OnvifLoginRefused", {{"vendor", "ONVIF"}, {"password", gszFakePass}}, {{"GetCamCapFile", 4}}, "t1:6/464", R"(
        LoadCapability(1, "ONVIF", "X100", "1", ""); GetDefaultChannel(); GetCamRealPass(0, "ONVIF", "X100", "3")
        GetCamCapFile("10.0.0.1", "root", "secret", "3", "ONVIF", "X100", 80, 0, 0, "", 0))"},
    {"OnvifUnreachable", {{"vendor", "ONVIF"}}, {{"GetCamCapFile", 2}}, "t1:1/468", R"(
        LoadCapability(1, "ONVIF", "X100", "1", ""); GetDefaultChannel()
        GetCamCapFile("10.0.0.1", "root", "pw", "3", "ONVIF", "X100", 80, 0, 0, "", 0))"},
    {"OnvifSubstitutedButNotValid", {{"vendor", "ONVIF"}}, {{"GetCamCapFile", 1}, {"IsValid", false}}, "t1:1/468", R"(
        LoadCapability(1, "ONVIF", "X100", "1", ""); GetDefaultChannel()
        GetCamCapFile("10.0.0.1", "root", "pw", "3", "ONVIF", "X100", 80, 0, 0, "", 0)
        LoadByParam(1, "10.0.0.1", 80, "root", "pw", "ONVIF", "X100", "3", ""); IsValid())"},
    {"CallThatCannotBeMade", {}, {{"GetDefaultChannel", kNoWrapper}, {"IsValid", false}}, "t1:1/468", R"(
        LoadCapability(1, "Acme", "X100", "1", "")
        )" + NotRegistered(517, "GetDefaultChannel") + R"(
        LoadByParam(1, "10.0.0.1", 80, "root", "pw", "Acme", "X100", "", ""); IsValid())"},
};

struct BatchTest : RowTest<WorkerRow> {
  void SetUp() override {
    ModuleTest::SetUp();
    for (const char* flag : {"NeedsSourcePath", "HasStreamPath"}) Script(flag, false);
    for (const char* success : {"LoadCapability", "VerifyConnection", "RetDevApiToRetCV", "Verify"}) Script(success, 0);
    Script("GetCamRealPass", "secret");
    Script("GetCamCapFile", List(0, "/cap"));
    Script("GetDefaultChannel", "3");
    Script("GetDefaultVideoType", 3);
    Script("GetStreamingTypeFor", 2);
    Script("IsValid", true);
    Script("GetStreamPath", List(0, "/live", 8554));
  }

  static std::string ResultsOf(const Json::Value& camList) {
    return Results(Send("CamBatAddVerify", {{"camList", camList}}));
  }
  /// What the request thread did before it answered.
  static std::string Threads() { return Transcript().substr(0, Transcript().find("SetSuccess")); }
};

TEST_P(BatchTest, WorkerGoes) {
  for (const auto& [function, answer] : GetParam().answers) Script(function, answer);
  EXPECT_EQ(ResultsOf(List(Camera(1, GetParam().camera))), GetParam().results);
  EXPECT_EQ(Transcript(1), Lines(GetParam().expected));
  EXPECT_EQ(Threads(), Group(1, 1));
}
INSTANTIATE_TEST_SUITE_P(Way, BatchTest, testing::ValuesIn(kWorkerRows), ByName());

TEST_F(BatchTest, RunsTenAtATimeAndAnswersInListOrder) {
  std::string expected;
  for (int worker = 1; worker <= 25; ++worker) {
    ScriptWorker(worker, "RetDevApiToRetCV", worker == 25 ? 0 : worker);
    const int code = worker >= 4 && worker <= 8 ? 458 + worker : worker == 15 ? 467 : 468;
    expected += (worker == 1 ? "t" : " t") + std::to_string(worker) + ":" +
                (worker == 25 ? "0" : std::to_string(worker) + "/" + std::to_string(code));
  }
  EXPECT_EQ(ResultsOf(Cameras(25)), expected);
  EXPECT_EQ(Threads(), Group(1, 10) + Group(11, 20) + Group(21, 25));
  EXPECT_EQ(Reads(), "GetParam(\"camList\", null)\n");
}

TEST_F(BatchTest, AnswerHasNoOtherMembers) {
  ScriptWorker(2, "RetDevApiToRetCV", -1);
  Send("CamBatAddVerify", {{"camList", Cameras(2)}});
  EXPECT_EQ(Transcript(), Group(1, 2) + Lines(R"(
    SetSuccess({"resultList":[{"name":"n1","result":0,"tmpId":"t1"},{"errinfo":{"code":468},"name":"n2","result":-1,"tmpId":"t2"}]})
  )"));
}

TEST_F(BatchTest, MissingMembersAreEmpty) {
  Json::Value camera{Json::objectValue};
  camera["tmpId"] = 5;
  EXPECT_EQ(ResultsOf(List(camera)), "5:0");
  EXPECT_EQ(Transcript(1).substr(0, Transcript(1).find("IsValid")), Lines(R"(
    LoadCapability(1, "", "", "1", ""); GetDefaultChannel(); LoadByParam(1, "", 0, "", "", "", "", "3", "")
  )"));
}

TEST_F(BatchTest, RefusesAListWithoutRows) {
  for (const Json::Value& camList : {Json::Value(), List(), Json::Value("list"), Json::Value(3), Camera(1)}) {
    scripted::Reset();
    Send("CamBatAddVerify", {{"camList", camList}});
    EXPECT_EQ(Transcript(),
              "log cameracap:832 HandleCamBatchAddVerify \"Failed to parse cam list.\\n\"\n" + Error(400));
  }
}

TEST_F(BatchTest, UnreadableRowsHaveAnEntryButNoWorker) {
  Json::Value list = Cameras(12);
  list[2] = "no object";
  list[5] = Json::Value();
  list[7]["port"] = "eighty";
  list[8]["name"] = List("no", "name");
  list.append(Camera(13, {{"tmpId", Json::Value(Json::objectValue)}, {"name", "lamp"}}));
  const Json::Value answer = Send("CamBatAddVerify", {{"camList", list}});
  EXPECT_EQ(Results(answer), "t1:0 t2:0 :1/468 t4:0 t5:0 :1/468 t7:0 t8:1/468 t9:1/468 t10:0 t11:0 t12:0 :1/468");
  EXPECT_EQ(answer["resultList"][7]["name"], "n8");
  EXPECT_EQ(answer["resultList"][8]["name"], "");
  EXPECT_EQ(answer["resultList"][12]["name"], "lamp");
  EXPECT_EQ(Threads(), Group(1, 8));
}

TEST_F(BatchTest, UnreadableRowsTakeNoPlaceAmongTheTen) {
  Json::Value list = Cameras(13);
  list[0] = 1;
  list[4] = 5;
  EXPECT_EQ(ResultsOf(list), ":1/468 t2:0 t3:0 t4:0 :1/468 t6:0 t7:0 t8:0 t9:0 t10:0 t11:0 t12:0 t13:0");
  EXPECT_EQ(Threads(), Group(1, 10) + Group(11, 11));
}

TEST_F(BatchTest, OnlyUnreadableRowsStartNothing) {
  EXPECT_EQ(ResultsOf(List(1, 2)), ":1/468 :1/468");
  EXPECT_EQ(Threads(), "");
}

TEST_F(BatchTest, WorkerThatDoesNotStartHasNoEntry) {
  const std::string log = "log cameracap:855 HandleCamBatchAddVerify \"Failed to create thread\\n\"\n";
  FailStart(2);
  FailStart(4);  // the last row: the running list is joined all the same
  EXPECT_EQ(ResultsOf(Cameras(4)), "t1:0 t3:0");
  EXPECT_EQ(Threads(), "pthread_create #1\npthread_create #2 fails\n" + log +
                           "pthread_create #3\npthread_create #4 fails\n" + log + "pthread_join #1\npthread_join #3\n");
}

TEST_F(BatchTest, NothingReportedIsStillASuccess) {
  FailStart(1);
  Send("CamBatAddVerify", {{"camList", Cameras(1)}});
  EXPECT_EQ(Transcript().substr(Transcript().find("Set")), "SetSuccess({\"resultList\":[]})\n");
}

TEST_F(BatchTest, WorkerThatIsNotJoinedHasNoEntry) {
  FailJoin(2, EDEADLK);
  EXPECT_EQ(ResultsOf(Cameras(3)), "t1:0 t3:0");
  const std::string log = "log cameracap:872 HandleCamBatchAddVerify \"Failed to join thread " + scripted::ThreadId(2) +
                          ". (errno=" + std::to_string(EDEADLK) + ")\\n\"\n";
  EXPECT_EQ(Threads(), "pthread_create #1\npthread_create #2\npthread_create #3\npthread_join #1\npthread_join #2\n" +
                           log + "pthread_join #3\n");
}

}  // namespace
