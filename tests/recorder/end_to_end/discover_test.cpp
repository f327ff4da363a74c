#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "rig/recorder.h"
#include "tests/recorder/rows.h"

// Probes are sent in a network namespace of the test's own, so that no real network hears them.

using namespace rig;

namespace {

/// The first camera tells of itself when it is asked, the second does not.
constexpr char kHeard[] = R"({"cameras": [
    {"name": "yard", "port": 8080, "onvif": {"media": ["1"]}, "discovery": true},
    {"name": "shy", "port": 8081, "onvif": {"media": ["1"]}}]})";

Finished Discover(const std::string& cameras, std::vector<std::string> arguments) {
  const TempFolder folder;
  folder.Write("cameras.json", cameras);
  arguments.insert(arguments.begin(), {"discover", "--seconds", "1"});
  return RunAlone(folder, arguments);
}

}  // namespace

TEST(Discover, FindsCamerasReadyForImport) {
  if (!CanRunAlone()) GTEST_SKIP() << "no namespaces can be made here";
  const Finished json = Discover(kHeard, {"--interface", "lo", "--json"});
  ASSERT_EQ(json.status, 0) << json.output;
  const Json::Value found = ParseJson(json.output);
  ASSERT_EQ(found.size(), 1U) << json.output;
  EXPECT_EQ(found[0]["host"].asString(), "127.0.0.1");
  EXPECT_EQ(found[0]["port"].asInt(), 8080);

  const TempFolder folder;
  const auto list = folder.Write("found.csv", Discover(kHeard, {"--interface", "lo"}).output);
  const TestRecorder recorder;
  const Finished imported = recorder.Control({"camera", "import", list.string()});
  EXPECT_EQ(imported.status, 0) << imported.output;
  EXPECT_THAT(recorder.Control({"camera", "list"}).output, testing::HasSubstr("ONVIF\tGeneric\t\t127.0.0.1\t8080\n"));
}

TEST(Discover, SaysWhyNothingIsFound) {
  if (!CanRunAlone()) GTEST_SKIP() << "no namespaces can be made here";
  const std::string shy = Replaced(kHeard, R"("discovery": true)", R"("discovery": false)");
  const Finished nobody = Discover(shy, {"--interface", "lo"});
  EXPECT_EQ(nobody.status, 0);
  EXPECT_THAT(nobody.output, testing::HasSubstr("no camera answered"));
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--interface", "absent"}, {}}) {
    const Finished refused = Discover(shy, arguments);
    EXPECT_EQ(refused.status, 1) << "the loopback alone is no network to ask";
    EXPECT_THAT(refused.output, testing::HasSubstr("network interface"));
  }
}
