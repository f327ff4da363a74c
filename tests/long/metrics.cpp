// Lets promtool read the metrics of a recorder, and a Prometheus scrape them: long_metrics FOLDER_OF_BOTH

#include <chrono>
#include <exception>
#include <iostream>
#include <string>
#include <thread>

#include "rig/recorder.h"

namespace rig {

namespace {

constexpr int kTries = 100;
constexpr std::chrono::milliseconds kPause{100};

/// Where a Prometheus for the test listens; it takes no free port by itself.
constexpr int kPort = 19090;

bool AcceptsPromtool(const std::string& tools, const TestRecorder& recorder) {
  const Reply reply = recorder.Ask("GET", "/metrics", recorder.Login());
  const Finished checked = Run(tools + "/promtool", {"check", "metrics"}, reply.body);
  std::cout << "promtool: status " << checked.status << "\n" << checked.output;
  return checked.status == 0 && checked.output.empty();
}

std::string ScrapeConfig(const TestRecorder& recorder, const std::string& token) {
  return "global: {scrape_interval: 1s}\nscrape_configs:\n- job_name: recorder\n  authorization: {credentials: " +
         token + "}\n  static_configs: [{targets: [\"127.0.0.1:" + std::to_string(recorder.Port()) + "\"]}]\n";
}

/// The first value of a query; "" as long as there is none.
std::string ValueOf(const std::string& query) try {
  const Reply reply = HttpClient(kPort).Ask(HttpRequest("GET", "/api/v1/query?query=" + query, {}));
  return ParseJson(reply.body)["data"]["result"][0]["value"][1].asString();
} catch (const std::exception&) {  // it does not listen yet, or is not ready
  return "";
}

bool IsScraped(const std::string& tools, const TestRecorder& recorder) {
  std::string token = recorder.Control({"token", "add", "prometheus", "--user", "tester"}).output;
  token.erase(token.find_last_not_of('\n') + 1);
  const TempFolder folder;
  const auto config = folder.Write("prometheus.yml", ScrapeConfig(recorder, token));
  const Process prometheus({tools + "/prometheus", "--config.file=" + config.string(),
                            "--storage.tsdb.path=" + (folder.Path() / "data").string(),
                            "--web.listen-address=127.0.0.1:" + std::to_string(kPort)},
                           folder.Path() / "log");
  std::string up;
  for (int i = 0; i < kTries && up != "1"; ++i) {
    std::this_thread::sleep_for(kPause);
    up = ValueOf("up");
  }
  std::cout << "Prometheus: up is " << up << ", it took " << ValueOf("scrape_duration_seconds") << " s for "
            << ValueOf("scrape_samples_scraped") << " samples, recorder_build_info is "
            << ValueOf("recorder_build_info") << "\n";
  return up == "1" && ValueOf("recorder_build_info") == "1";
}

}  // namespace

}  // namespace rig

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const rig::TestRecorder recorder;
  recorder.Post("CameraTest", Json::Value(Json::objectValue));
  const bool isRead = rig::AcceptsPromtool(argv[1], recorder);
  return rig::IsScraped(argv[1], recorder) && isRead ? 0 : 1;
}
