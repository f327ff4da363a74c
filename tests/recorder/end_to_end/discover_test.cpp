#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>

#include "tests/recorder/end_to_end/cameras.h"
#include "tests/recorder/end_to_end/support.h"

// Probes are sent in a network namespace of the test's own, so that no real network hears them.

namespace end_to_end {

namespace {

const std::filesystem::path kPrograms = PROGRAM_FOLDER;

/// Whoever is not root needs a user namespace, too, to be allowed a network namespace.
const char* NamespaceFlags() { return geteuid() == 0 ? "-n" : "-rn"; }

bool CanMakeNamespace() { return Run("/usr/bin/unshare", {NamespaceFlags(), "ip", "link"}).status == 0; }

/// Simulated cameras in a namespace with nothing but a loopback interface that takes multicasts.
class LonelyCameras {
 public:
  explicit LonelyCameras(const Json::Value& cameras) {
    Json::Value config;
    config["cameras"] = cameras;
    const auto file = folder_.Write("cameras.json", ToText(config));
    const std::string script =
        "ip link set lo up && ip link set lo multicast on && ip route add 224.0.0.0/4 dev lo && echo $$ && exec \"$0\" "
        "\"$1\"";
    process_ =
        std::make_unique<Process>(std::vector<std::string>{"/usr/bin/unshare", NamespaceFlags(), "/bin/sh", "-c",
                                                           script, (kPrograms / "simcam").string(), file.string()},
                                  folder_.Path() / "log");
    id_ = process_->ReadLine();
    started_ = ParseJson(process_->ReadLine());
  }

  int Port(int index) const { return started_["cameras"][index]["port"].asInt(); }

  /// `recorderctl discover` in the namespace.
  Finished Discover(const std::vector<std::string>& arguments) const {
    std::vector<std::string> command = {"-t", id_, "-n"};
    if (geteuid() != 0) command.insert(command.end(), {"-U", "--preserve-credentials"});
    command.insert(command.end(), {(kPrograms / "recorderctl").string(), "discover", "--seconds", "1"});
    command.insert(command.end(), arguments.begin(), arguments.end());
    return Run("/usr/bin/nsenter", command);
  }

 private:
  TempFolder folder_;
  std::unique_ptr<Process> process_;
  std::string id_;
  Json::Value started_;
};

Json::Value Discoverable(const std::string& name, bool isDiscoverable) {
  Json::Value camera;
  camera["onvif"]["media"] = List({"1"});
  camera["discovery"] = isDiscoverable;
  return Camera(name, camera);
}

}  // namespace

TEST(Discover, FindsCamerasReadyForImport) {
  if (!CanMakeNamespace()) GTEST_SKIP() << "no network namespace can be made here";
  const LonelyCameras cameras(List({Discoverable("yard", true), Discoverable("shy", false)}));

  const Finished json = cameras.Discover({"--interface", "lo", "--json"});
  ASSERT_EQ(json.status, 0) << json.output;
  const Json::Value found = ParseJson(json.output);
  ASSERT_EQ(found.size(), 1U) << json.output;
  EXPECT_EQ(found[0]["host"].asString(), "127.0.0.1");
  EXPECT_EQ(found[0]["port"].asInt(), cameras.Port(0));

  const TempFolder folder;
  const auto list = folder.Write("found.csv", cameras.Discover({"--interface", "lo"}).output);
  const TestRecorder recorder;
  const Finished imported = recorder.Control({"camera", "import", list.string()});
  EXPECT_EQ(imported.status, 0) << imported.output;
  EXPECT_THAT(recorder.Control({"camera", "list"}).output,
              testing::HasSubstr("ONVIF\tGeneric\t\t127.0.0.1\t" + std::to_string(cameras.Port(0)) + "\n"));
}

TEST(Discover, SaysWhyNothingIsFound) {
  if (!CanMakeNamespace()) GTEST_SKIP() << "no network namespace can be made here";
  const LonelyCameras cameras(List({Discoverable("shy", false)}));
  const Finished nobody = cameras.Discover({"--interface", "lo"});
  EXPECT_EQ(nobody.status, 0);
  EXPECT_THAT(nobody.output, testing::HasSubstr("no camera answered"));
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--interface", "absent"}, {}}) {
    const Finished refused = cameras.Discover(arguments);
    EXPECT_EQ(refused.status, 1) << "the loopback alone is no network to ask";
    EXPECT_THAT(refused.output, testing::HasSubstr("network interface"));
  }
}

}  // namespace end_to_end
