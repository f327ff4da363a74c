#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "rig/recorder.h"
#include "tests/recorder/rows.h"

// Probes are sent in a network namespace of the test's own, so that no real network hears them.

using namespace rig;

using testing::HasSubstr;

namespace {

/// The first camera tells of itself when it is asked, the second does not.
constexpr char kHeard[] = R"({"cameras": [
    {"name": "yard", "port": 8080, "onvif": {"media": ["1"]}, "discovery": true, "mdns": true},
    {"name": "shy", "port": 8081, "onvif": {"media": ["1"]}}]})";

Finished Discover(const std::filesystem::path& config, std::vector<std::string> arguments,
                  const std::string& cameras = kHeard) {
  const TempFolder folder;
  folder.Write("cameras.json", cameras);
  arguments.insert(arguments.begin(), {"--config", config, "discover", "--seconds", "1"});
  return RunAlone(folder, arguments);
}

constexpr char kFirstAddress[] = R"({"allow": ["127.0.0.0/8"], "deny": ["192.0.2.0/24"]})";
constexpr char kSecondAddress[] = R"({"deny": ["127.0.0.0/8"]})";

/// The configuration of `recorder` with another policy.
std::filesystem::path WithPolicy(const TestRecorder& recorder, const std::string& policy) {
  Json::Value config = ParseJson(ReadText(recorder.ConfigFile()));
  config["addressPolicy"] = ParseJson(policy);
  std::filesystem::path file = recorder.ConfigFile().parent_path() / "other.json";
  std::ofstream(file) << ToText(config);
  return file;
}

}  // namespace

TEST(Discover, FindsCamerasReadyForImportAndKnowsThemThen) {
  if (!CanRunAlone()) GTEST_SKIP() << "no namespaces can be made here";
  const TestRecorder recorder;
  const auto first = WithPolicy(recorder, kFirstAddress);
  const Finished found = Discover(first, {"--interface", "lo"});
  ASSERT_EQ(found.status, 0) << found.output;
  EXPECT_THAT(found.output, HasSubstr("1 device answered in 127.0.0.0/8\n"));
  const TempFolder folder;
  const auto list = folder.Write("found.csv", found.output.substr(0, found.output.find("recorderctl: ")));
  const Finished imported = recorder.Control({"camera", "import", list.string()});
  EXPECT_EQ(imported.status, 0) << imported.output;
  EXPECT_THAT(recorder.Control({"camera", "list"}).output, HasSubstr("ONVIF\tGeneric\t\t127.0.0.1\t8080\n"));

  EXPECT_THAT(Discover(first, {"--interface", "lo"}).output, HasSubstr("127.0.0.1 is stored: \"yard\""));
  const Finished moved = Discover(WithPolicy(recorder, kSecondAddress), {});
  EXPECT_THAT(moved.output, HasSubstr("\"yard\", stored at 127.0.0.1, now at 192.0.2.1"));
}

TEST(Discover, KnocksAtARange) {
  if (!CanRunAlone()) GTEST_SKIP() << "no namespaces can be made here";
  const TestRecorder recorder;
  const Finished found = Discover(WithPolicy(recorder, kFirstAddress), {"--range", "127.0.0.0/28"},
                                  R"({"cameras": [{"name": "gate", "port": 8554, "mdns": true}]})");
  EXPECT_EQ(found.status, 0);
  EXPECT_THAT(found.output, HasSubstr("127.0.0.1 does not tell of ONVIF, but of \"gate\"; open ports: 8554\n"));
  EXPECT_THAT(found.output, HasSubstr("1 device answered in 127.0.0.0/8, 127.0.0.0/28\n"));
}

TEST(Discover, SaysWhyNothingIsFound) {
  if (!CanRunAlone()) GTEST_SKIP() << "no namespaces can be made here";
  const TestRecorder recorder;
  const std::string shy = Replaced(kHeard, R"(, "discovery": true, "mdns": true)", "");
  const Finished nobody = Discover(WithPolicy(recorder, kFirstAddress), {}, shy);
  EXPECT_EQ(nobody.status, 0);
  EXPECT_THAT(nobody.output, HasSubstr("no camera answered in 127.0.0.0/8"));
  const auto closed = WithPolicy(recorder, R"({"deny": ["192.0.2.0/24"]})");
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--interface", "absent"}, {}}) {
    const Finished refused = Discover(closed, arguments, shy);
    EXPECT_EQ(refused.status, 1) << "what the policy closes is no network to ask";
    EXPECT_THAT(refused.output, HasSubstr("network interface"));
  }
}

TEST(Discover, TellsOfDevicesLineByLineOverTheApi) {
  if (!EnterOwnNetwork()) GTEST_SKIP() << "this user may have no network of his own";
  const SimCameras cameras(ParseJson(kHeard)["cameras"]);
  const TestRecorder recorder;
  Connection connection(recorder.Port(), std::chrono::seconds(60));
  connection.Send(HttpRequest("POST", "/recorder/1/discover", recorder.Login(), R"({"seconds": 1})"));
  const std::string bytes = connection.ReceiveUntil("success");
  EXPECT_THAT(bytes, HasSubstr("application/x-ndjson"));
  EXPECT_THAT(bytes, HasSubstr(R"("device":1,)"));
  EXPECT_THAT(bytes, HasSubstr(R"("by":["onvif","mdns"])"));
  EXPECT_THAT(bytes, HasSubstr(R"("name":"yard","openPorts":[],"port":8080,"serial":"","state":"new"})"));
  EXPECT_THAT(bytes, HasSubstr(R"({"data":{"networks":[{"interface":"lo","network":"127.0.0.0/8"}]},"success":true})"));
}

TEST(Discover, RefusesOverTheApiWhatIsTooMuchOrClosed) {
  const TestRecorder recorder;
  const std::pair<const char*, const char*> refused[] = {{R"({"range": "10.0.0.0/8"})", "at most 1024"},
                                                         {R"({"range": "169.254.169.254"})", "address policy"},
                                                         {R"({"seconds": 61})", "1 to 60"}};
  for (const auto& [body, reason] : refused) {
    const Answer answer = recorder.Send("POST", "/recorder/1/discover", recorder.Login(), body);
    EXPECT_EQ(answer.status, 400) << answer.body;
    EXPECT_THAT(answer.body, HasSubstr(reason));
  }
}
