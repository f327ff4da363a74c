#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "rig/cameras.h"
#include "tests/recorder/rows.h"

// What an administrator does with recorderctl.

using namespace rig;

using testing::HasSubstr;

TEST(StoredCamera, IsTestedAndPicturedByItsId) {
  const SimCameras cameras(List({Camera("good"), Camera("path")}));
  const TestRecorder recorder;
  const TempFolder folder;
  const std::string file = (folder.Path() / "picture").string();
  recorder.AddCamera("Simcam", "RTSP-H264", cameras.Port("good"), "admin", kSecret);
  recorder.AddCamera("user", "", cameras.Port("path"), "admin", kSecret, "1", "/stream1");
  for (const char* id : {"1", "2"}) {
    const Finished test = recorder.Control({"test", id});
    EXPECT_EQ(test.status, 0) << test.output;
    EXPECT_THAT(test.output, HasSubstr(R"("result":0)"));
    EXPECT_EQ(recorder.Control({"snapshot", id, "-o", file}).status, 0);
    EXPECT_TRUE(IsJpeg(ReadText(file)));
    std::filesystem::remove(file);
  }
  ASSERT_EQ(recorder.Control({"camera", "password", "1"}, "wrong\n").status, 0);
  const Finished test = recorder.Control({"test", "1"});
  EXPECT_EQ(test.status, 1);
  EXPECT_THAT(test.output, HasSubstr("464"));
  for (const char* id : {"1", "3"}) EXPECT_EQ(recorder.Control({"snapshot", id, "-o", file}).status, 1);
  EXPECT_FALSE(std::filesystem::exists(file)) << "the default picture is nobody's";
}

struct AddCase {
  const char* name;
  std::vector<std::string> arguments;  ///< beside host and no password
  int status;
  const char* outputHolds;
};

/// One after another: a camera that is stored is there for the next.
const AddCase kAddCases[] = {
    {"Known", {"--vendor", "Simcam", "--model", "RTSP-H264", "--port", "80"}, 0, "added camera 1"},
    {"OtherCapitals", {"--vendor", "SIMCAM", "--model", "rtsp-h264", "--port", "81"}, 0, "added camera 2"},
    {"OnlyModel", {"--vendor", "onvif", "--port", "82"}, 0, "added camera 3"},
    {"UnknownModel", {"--vendor", "Simcam", "--model", "RTSP-H2645", "--port", "83"}, 1, "nearest: Simcam RTSP-H264"},
    {"UnknownVendor", {"--vendor", "ONVYF", "--port", "83"}, 1, "nearest: ONVIF Generic"},
    {"Forced", {"--vendor", "Nobody", "--model", "x", "--port", "84", "--force"}, 0, "added camera 4"},
    {"Stored", {"--vendor", "ONVIF", "--port", "80"}, 1, "the same camera as camera 1 (GATE)"},
    {"OtherPath", {"--vendor", "User", "--port", "80", "--source-path", "/x"}, 0, "added camera 5"},
    {"StoredForced", {"--vendor", "ONVIF", "--port", "80", "--force"}, 0, "added camera 6"},
};

TEST(StoredCamera, IsRefusedWithAnUnknownModelOrTwice) {
  const TestRecorder recorder;
  for (const AddCase& row : kAddCases) {
    SCOPED_TRACE(row.name);
    std::vector<std::string> arguments = {"camera", "add", "--host", "GATE", "--no-password"};
    arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
    const Finished added = recorder.Control(arguments);
    EXPECT_EQ(added.status, row.status);
    EXPECT_THAT(added.output, HasSubstr(row.outputHolds));
  }
  const std::string list = recorder.Control({"camera", "list"}).output;
  EXPECT_THAT(list, HasSubstr("2\tenabled\tGATE\tSimcam\tRTSP-H264\t\tGATE\t81\n")) << "by the recorder's own names";
}

TEST(StoredCamera, IsEditedAndAsksForItsPasswordWhenItWouldGoElsewhere) {
  const SimCameras cameras(List({Camera("first"), Camera("second")}));
  const TestRecorder recorder;
  recorder.AddCamera("Simcam", "RTSP-H264", cameras.Port("first"), "admin", kSecret);
  const auto edit = [&](std::vector<std::string> arguments, const std::string& input = {}) {
    arguments.insert(arguments.begin(), {"camera", "edit", "1"});
    return recorder.Control(arguments, input);
  };
  EXPECT_EQ(edit({"--name", "gate", "--channel", "", "--status", "disabled"}).status, 0) << "no password is asked for";
  EXPECT_THAT(recorder.Control({"camera", "list"}).output, HasSubstr("1\tdisabled\tgate\tSimcam\tRTSP-H264\t\t"));
  for (const char* ask : {"test", "snapshot"}) {
    EXPECT_THAT(recorder.Control({ask, "1"}).output, HasSubstr("camera 1 is disabled"));
  }
  EXPECT_EQ(edit({"--status", "enabled"}).status, 0);
  const std::vector<std::string> move = {"--port", std::to_string(cameras.Port("second"))};
  EXPECT_THAT(edit(move).output, HasSubstr("no password on standard input"));
  EXPECT_EQ(recorder.Control({"test", "1"}).status, 0);
  EXPECT_EQ(cameras.Log("second")["connections"].asInt(), 0);
  EXPECT_EQ(edit(move, std::string(kSecret) + "\n").status, 0);
  EXPECT_EQ(recorder.Control({"test", "1"}).status, 0);
  EXPECT_GT(cameras.Log("second")["connections"].asInt(), 0);

  EXPECT_THAT(edit({"--model", "RTSP-H26"}).output, HasSubstr("nearest: Simcam RTSP-H26"));
  EXPECT_THAT(edit({}).output, HasSubstr("nothing to change"));
  EXPECT_THAT(edit({"--password", "--no-password"}).output, HasSubstr("excludes"));

  EXPECT_THAT(recorder.Control({"camera", "remove", "1"}).output, HasSubstr("recorderctl camera restore 1\n"));
  EXPECT_THAT(recorder.Control({"test", "1"}).output, HasSubstr("there is no camera 1"));
  EXPECT_EQ(recorder.Control({"camera", "restore", "1"}).status, 0);
  EXPECT_EQ(recorder.Control({"test", "1"}).status, 0);
  EXPECT_EQ(recorder.Control({"camera", "restore", "1"}).status, 1) << "it is there";
}

TEST(ImportedList, NamesUnknownModelsAndRepeatedRows) {
  const TestRecorder recorder;
  const TempFolder folder;
  const std::string file = folder.Write("cameras.csv",
                                        "Our cameras\n"
                                        "Site;Address;Vendor;Model;Codec\n"
                                        "hall;cam1;ONVIF;;H.264\n"
                                        "yard;cam2;Axsi;Generic;\n"
                                        "hall again;CAM1;ONVIF;;\n");
  const std::vector<std::string> import = {"camera", "import", "--map", "Site=name", file};
  const Finished first = recorder.Control(import);
  EXPECT_EQ(first.status, 1);
  EXPECT_THAT(first.output, HasSubstr("line 4, column Model: no such model is known; nearest: Axis Generic"));
  EXPECT_THAT(first.output, HasSubstr("line 5: the same camera as line 3\n"));
  EXPECT_THAT(first.output, HasSubstr("the column Codec is not stored\n"));
  EXPECT_THAT(first.output, HasSubstr("imported 1 cameras\n"));
  EXPECT_THAT(recorder.Control(import).output, HasSubstr("line 3: the same camera as camera 1 (hall)\n"));
  EXPECT_EQ(recorder.Control({"camera", "import", file}).status, 1) << "\"Site\" is no known heading";
  for (const char* second : {"Site=place", "SITE=name"}) {
    EXPECT_EQ(recorder.Control({"camera", "import", file, "--map", "Site=name", "--map", second}).status, 2) << second;
  }
  EXPECT_THAT(recorder.Control({"camera", "import", "--force", file, "--map", "Site=-"}).output,
              HasSubstr("imported 3 cameras\n"));
}

struct ListedModelCase {
  const char* row;
  const char* refusal;  ///< "": it is taken
};

/// The second line on, one after another.
const ListedModelCase kListedModels[] = {
    {"/a;Acme;X1;;h264 mjpeg;8554", ""},
    {"/b;ACME;x1;sub;;", ""},
    {"/c;Acme;X2;fourth;h264;", "line 4, column stream: is none of main, sub and third"},
    {"/d;Acme;X2;main;h264;", "line 5: is of the model in line 4"},
    {"/user=admin;Acme;X3;;h264;", "line 6, column path: The path seems to hold a user name"},
    {"e;Acme;X4;;h264;", "line 7, column path: A path begins with"},
    {"/f;Acme;X4;sub;h264;", "line 8: is of the model in line 7"},
    {"/g;AXIS;generic;;h264;", "line 9, column model: This model is known already: "},
    {"/h;Acme Corp;X5;;h264;", "line 10, column maker: A vendor name holds no blank"},
    {"/i;ONVIF;X6;;h264;", "line 11, column maker: This vendor name is built in"},
    {"/j;Acme;X7;;h266;", "line 12, column codecs: holds a codec that is none of H.264"},
    {"/k;Acme;X6;third;h264;", "line 13, column stream: there is no row of the model's main stream"},
    {"/l;Acme;X9;;h264;99999", "line 14, column port: is no port"},
    {"/m;Acme", "line 15: 2 cells, but the heading has 6"},
    {"/n;Other;Y;;;", ""},
    {"/o;Other;Z;;;", "line 17: is of the model in line 18"},
    {"/p;Other;Z;sub;MPEG-4;", "line 18, column codecs: is not blank"},
    {"/q;Acme;X10;;h264;", "line 19: is of the model in line 20"},
    {"/r;Acme;X10;;;", "line 20, column codecs: is empty; a second main row"},
    {"/s;Acme;Porti\xE8re;;h264;", "line 21: the text is not UTF-8"},
    {"/live?pw=x1;Acme;X11;;h264;", "line 22, column path: The path seems to hold a password"},
    {"/20261126?authbasic=64;Other;Warned;;;", "line 23, column path: The path may hold a login"},
    {"/t;株式会社株式会社株式会社株式会社株式会社株式会社株式会社;Long;;;", ""},
};

TEST(OwnModels, AreTakenFromAListAndTheOtherRowsNamed) {
  const TestRecorder recorder;
  const TempFolder folder;
  std::string list = "Path;maker;MODEL;stream;codecs;port\n";
  for (const ListedModelCase& row : kListedModels) list += std::string(row.row) + "\n";
  const Finished import = recorder.Control({"models", "import", folder.Write("models.csv", list).string()});
  EXPECT_EQ(import.status, 1);
  for (const ListedModelCase& row : kListedModels) EXPECT_THAT(import.output, HasSubstr(row.refusal));
  EXPECT_THAT(import.output, HasSubstr("imported 4 models\n"));
  const Finished check = recorder.Control({"check-models"});
  EXPECT_EQ(check.status, 0) << check.output;
}

TEST(OwnModels, AreKnownFromTheNextRequestOnAndCanBeTakenBack) {
  const TestRecorder recorder;
  const TempFolder folder;
  const auto models = recorder.StateFolder() / "models";
  const std::string list = folder.Write("models.csv", recorder.Control({"models", "import", "--template"}).output);
  const auto code = [&] { return recorder.Get("CamCap", "vendor=Acme&model=X100").Code(); };
  EXPECT_EQ(code(), 400);
  EXPECT_EQ(recorder.Control({"models", "import", list}).status, 0);
  EXPECT_EQ(code(), 0);
  EXPECT_EQ(std::filesystem::status(models).permissions(), std::filesystem::perms::owner_all);
  const std::string own = ReadText(models / "acme.own.json");
  const std::string file =
      folder.Write("own.json", "\xEF\xBB\xBF" + Replaced(own, "\"check\"", R"("device": {"model": "SN1"}, "check")"));
  std::filesystem::create_directory(models / "no.json");
  const Finished again = recorder.Control({"models", "import", file});
  EXPECT_EQ(again.status, 1);
  EXPECT_THAT(again.output, HasSubstr("/models/0/name: This model is known already: " + models.string()));
  EXPECT_THAT(recorder.Control({"models", "list"}).output, HasSubstr("Acme\tX100\t"));
  EXPECT_EQ(recorder.Control({"models", "remove", "Axis", "Generic"}).status, 1);
  EXPECT_EQ(recorder.Control({"models", "remove", "acme", "x100"}).status, 0);
  EXPECT_EQ(code(), 400);
  EXPECT_EQ(recorder.Control({"models", "import", file}).status, 0) << "our own form";
  const Json::Value taken = ParseJson(ReadText(models / "acme.own.json"));
  EXPECT_FALSE(taken["models"][0].isMember("device")) << "of one camera alone";
  const Json::Value source = taken["sources"]["import"];
  EXPECT_EQ(source["by"], "user");
  EXPECT_EQ(source["document"], "own.json");
}

TEST(OwnModels, AreNotAddedToAFileWithAMistake) {
  const TestRecorder recorder;
  const TempFolder folder;
  const std::string list = folder.Write("models.csv", recorder.Control({"models", "import", "--template"}).output);
  std::filesystem::create_directory(recorder.StateFolder() / "models");
  const auto own = recorder.StateFolder() / "models" / "mine.json";
  std::ofstream(own) << R"({"vendor": "ACME", "source": "x", "models": [{"name": 5}]})";
  const std::string before = ReadText(own);
  const Finished import = recorder.Control({"models", "import", list});
  EXPECT_EQ(import.status, 1);
  EXPECT_THAT(import.output, HasSubstr("mine.json has a mistake"));
  EXPECT_EQ(ReadText(own), before);
  const Finished check = recorder.Control({"check-models"});
  EXPECT_EQ(check.status, 1);
  EXPECT_THAT(check.output, HasSubstr("mine.json"));
  EXPECT_EQ(recorder.Get("CamCap", "vendor=Simcam&model=RTSP-H264").Code(), 0) << "the others are served";
  EXPECT_THAT(recorder.Log(), HasSubstr("mine.json"));
}

TEST(ARecorder, IsBackedUpWhileItRunsAndRestoredWhereNoneRuns) {
  const SimCameras cameras(List({Camera("good")}));
  const TempFolder folder;
  const std::string file = (folder.Path() / "backup").string();
  {
    const TestRecorder lost;
    lost.AddCamera("Simcam", "RTSP-H264", cameras.Port("good"), "admin", kSecret);
    const Finished backup = lost.Control({"backup", "--passphrase", file}, "a phrase\n");
    EXPECT_EQ(backup.status, 0) << backup.output;
    EXPECT_THAT(backup.output, HasSubstr("holds the recorder and the key to all passwords"));
    const Finished refused = lost.Control({"restore", "--replace", file}, "a phrase\n");
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.output, HasSubstr("stop it first"));
  }
  const TestRecorder recorder({.prepare = [&](const TestRecorder& made) {
    const Finished restored = made.Control({"restore", file}, "a phrase\n");
    EXPECT_EQ(restored.status, 0) << restored.output;
  }});
  Json::Value params = CameraParams(cameras.Port("good"), kFakePass);
  params["camId"] = 1;
  EXPECT_EQ(recorder.Post("CameraTest", params).Code(), 0) << "with the user and the stored password of before";
}

TEST(ARecorder, WhoseRestoreWasInterruptedIsRestoredBeforeACommandReadsOrChangesIt) {
  const TempFolder folder;
  const std::string list = folder.Write("cameras.csv", "address,vendor\nhall,ONVIF\n").string();
  const TestRecorder recorder({.prepare = [&](const TestRecorder& made) {
    const std::string add = "camera add --vendor ONVIF --no-password --port 80 --host ";
    for (const std::string& command :
         {add + "gate", add + "yard", std::string("camera edit 1 --name door"), "camera import " + list,
          std::string("models list"), std::string("check-models")}) {
      SCOPED_TRACE(command);
      const auto rest = made.StateFolder() / "exchange.cleared";
      std::filesystem::create_directories(rest / "new");
      const Finished done = made.Control(Words(command));
      EXPECT_EQ(done.status, 0) << done.output;
      EXPECT_FALSE(std::filesystem::exists(rest));
    }
  }});
}
