// simcam: simulated cameras as seen from the network. README.md shows the configuration.
#include <glib-unix.h>
#include <gst/gst.h>
#include <json/json.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <list>
#include <semaphore>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "simcam/camera.h"
#include "simcam/codecs.h"

namespace {

using simcam::Camera;

constexpr const char* kUsage =
    "usage: simcam [--until-stdin-closes] [--cache DIR] CONFIG.json\n"
    "       simcam --help | --version\n"
    "Serves the configured cameras on 127.0.0.1 and prints their ports as one line of JSON.\n\n";

struct Options {
  std::string config;
  std::string cache;
  bool untilStdinCloses = false;
  bool help = false;
  bool version = false;
};

Options ReadOptions(const std::vector<std::string>& words) {
  Options options;
  for (size_t i = 0; i < words.size(); ++i) {
    if (words[i] == "--help") {
      options.help = true;
    } else if (words[i] == "--version") {
      options.version = true;
    } else if (words[i] == "--until-stdin-closes") {
      options.untilStdinCloses = true;
    } else if (words[i] == "--cache" && i + 1 < words.size()) {
      options.cache = words[++i];
    } else if (words[i].starts_with("--") || !options.config.empty()) {
      throw simcam::ConfigError("unexpected " + words[i] + "; --help tells more");
    } else {
      options.config = words[i];
    }
  }
  if (options.config.empty() && !options.help && !options.version)
    throw simcam::ConfigError("which configuration? --help tells more");
  return options;
}

/// The default main loop, on a thread: GStreamer's RTSP server does its housekeeping in it, and it notices when the
/// program is to end.
class MainLoop {
 public:
  explicit MainLoop(bool untilStdinCloses) : loop_(g_main_loop_new(nullptr, FALSE)) {
    g_unix_signal_add(SIGTERM, OnSignal, this);
    g_unix_signal_add(SIGINT, OnSignal, this);
    if (untilStdinCloses) g_unix_fd_add(STDIN_FILENO, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP), OnStdin, this);
    thread_ = std::jthread([this] { g_main_loop_run(loop_); });
  }
  ~MainLoop() {
    while (g_main_loop_is_running(loop_) == 0) std::this_thread::yield();
    g_main_loop_quit(loop_);
    thread_.join();
    g_main_loop_unref(loop_);
  }
  MainLoop(const MainLoop&) = delete;
  MainLoop& operator=(const MainLoop&) = delete;

  [[nodiscard]] std::stop_token End() const { return end_.get_token(); }
  void WaitForEnd() { ended_.acquire(); }

 private:
  static gboolean OnSignal(gpointer loop) {
    auto& self = *static_cast<MainLoop*>(loop);
    if (self.end_.request_stop()) self.ended_.release();
    return G_SOURCE_CONTINUE;
  }

  static gboolean OnStdin(gint, GIOCondition, gpointer loop) {
    std::array<char, 256> ignored{};
    if (read(STDIN_FILENO, ignored.data(), ignored.size()) > 0) return G_SOURCE_CONTINUE;
    OnSignal(loop);
    return G_SOURCE_REMOVE;
  }

  GMainLoop* loop_;
  std::stop_source end_;
  std::binary_semaphore ended_{0};
  std::jthread thread_;
};

std::string PortsAsJson(const std::list<Camera>& cameras) {
  Json::Value json;
  json["cameras"] = Json::Value(Json::arrayValue);
  for (const Camera& camera : cameras) {
    Json::Value& item = json["cameras"].append(Json::objectValue);
    item["name"] = camera.Config().name;
    item["port"] = camera.Port();
  }
  Json::StreamWriterBuilder writer;
  writer["indentation"] = "";
  return Json::writeString(writer, json);
}

/// "redirectTo" is another camera's name, an address, or a path.
std::string RedirectAddress(const std::string& target, const std::list<Camera>& cameras) {
  for (const Camera& camera : cameras) {
    if (camera.Config().name != target) continue;
    return "http://127.0.0.1:" + std::to_string(camera.Port()) + camera.Config().snapshotPath;
  }
  const bool isAddress = target.starts_with('/') || target.find("://") != std::string::npos;
  if (!isAddress) throw simcam::ConfigError("redirectTo: no camera " + target);
  return target;
}

void Run(const Options& options) {
  MainLoop loop(options.untilStdinCloses);
  simcam::ClipStore clips(options.cache, loop.End());
  std::list<Camera> cameras;
  for (const auto& config : simcam::ReadConfig(options.config)) cameras.emplace_back(config, clips);
  for (Camera& camera : cameras) {
    const std::string& target = camera.Config().redirectTo;
    if (!target.empty()) camera.SetRedirect(RedirectAddress(target, cameras));
    camera.Start();
  }
  std::cout << PortsAsJson(cameras) << std::endl;
  loop.WaitForEnd();
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);  // OpenSSL writes to connections that the other side has ended
  try {
    const Options options = ReadOptions({argv + 1, argv + argc});
    if (options.help) {
      std::cout << kUsage << "codecs:\n" << simcam::CodecHelp() << "\nfaults:\n" << simcam::FaultHelp();
      return 0;
    }
    if (options.version) {
      std::cout << "simcam " PROJECT_VERSION "\n";
      return 0;
    }
    gst_init(nullptr, nullptr);
    Run(options);
    return 0;
  } catch (const simcam::Stopped&) {
    return 0;
  } catch (const simcam::ConfigError& error) {
    std::cerr << "simcam: " << error.what() << "\n";
    return 2;
  } catch (const std::exception& error) {
    std::cerr << "simcam: " << error.what() << "\n";
    return 1;
  }
}
