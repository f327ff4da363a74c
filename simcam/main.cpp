// simcam: simulated cameras as seen from the network. README.md shows the configuration.
#include <gst/gst.h>
#include <json/json.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <list>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "simcam/camera.h"

namespace {

using simcam::Camera;

constexpr const char* kUsage =
    "usage: simcam [--until-stdin-closes] [--cache DIR] CONFIG.json\n"
    "Serves the configured cameras on 127.0.0.1 and prints their ports as one line of JSON.\n\nfaults:\n";

struct Options {
  std::string config;
  std::string cache;
  bool untilStdinCloses = false;
  bool help = false;
};

Options ReadOptions(const std::vector<std::string>& words) {
  Options options;
  for (size_t i = 0; i < words.size(); ++i) {
    if (words[i] == "--help") {
      options.help = true;
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
  if (options.config.empty() && !options.help) throw simcam::ConfigError("which configuration? --help tells more");
  return options;
}

/// GStreamer's RTSP server does its housekeeping in the default main loop.
class MainLoop {
 public:
  MainLoop() : loop_(g_main_loop_new(nullptr, FALSE)), thread_([this] { g_main_loop_run(loop_); }) {}
  ~MainLoop() {
    while (g_main_loop_is_running(loop_) == 0) std::this_thread::yield();
    g_main_loop_quit(loop_);
    thread_.join();
    g_main_loop_unref(loop_);
  }
  MainLoop(const MainLoop&) = delete;
  MainLoop& operator=(const MainLoop&) = delete;

 private:
  GMainLoop* loop_;
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

/// "redirectTo" is another camera's name or an address.
std::string RedirectAddress(const std::string& target, const std::list<Camera>& cameras) {
  for (const Camera& camera : cameras) {
    if (camera.Config().name != target) continue;
    return "http://127.0.0.1:" + std::to_string(camera.Port()) + camera.Config().snapshotPath;
  }
  if (target.find("://") == std::string::npos) throw simcam::ConfigError("redirectTo: no camera " + target);
  return target;
}

/// Signals that end us are read from a descriptor; they must be blocked before any thread starts.
int BlockedSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  return signalfd(-1, &signals, SFD_CLOEXEC);
}

bool StdinIsAtEnd() {
  std::array<char, 256> ignored{};
  return read(STDIN_FILENO, ignored.data(), ignored.size()) <= 0;
}

void WaitForEnd(int signals, bool untilStdinCloses) {
  std::array<pollfd, 2> entries = {{{signals, POLLIN, 0}, {untilStdinCloses ? STDIN_FILENO : -1, POLLIN, 0}}};
  while (true) {
    poll(entries.data(), entries.size(), -1);
    if (entries[0].revents != 0) return;
    if (entries[1].revents != 0 && StdinIsAtEnd()) return;
  }
}

/// Waits for the end beside whatever else is done.
class EndWatcher {
 public:
  EndWatcher(int signals, bool untilStdinCloses)
      : thread_([this, signals, untilStdinCloses] {
          WaitForEnd(signals, untilStdinCloses);
          stop_.request_stop();
        }) {}
  /// The thread waits for a signal, so it gets one; it is blocked everywhere else.
  ~EndWatcher() { kill(getpid(), SIGTERM); }
  EndWatcher(const EndWatcher&) = delete;
  EndWatcher& operator=(const EndWatcher&) = delete;

  [[nodiscard]] std::stop_token Token() const { return stop_.get_token(); }
  void Join() { thread_.join(); }

 private:
  std::stop_source stop_;
  std::jthread thread_;
};

void Run(const Options& options, int signals) {
  EndWatcher watcher(signals, options.untilStdinCloses);
  simcam::ClipStore clips(options.cache, watcher.Token());
  const MainLoop loop;
  std::list<Camera> cameras;
  for (const auto& config : simcam::ReadConfig(options.config)) cameras.emplace_back(config, clips);
  for (Camera& camera : cameras) {
    const std::string& target = camera.Config().redirectTo;
    if (!target.empty()) camera.SetRedirect(RedirectAddress(target, cameras));
    camera.Start();
  }
  std::cout << PortsAsJson(cameras) << std::endl;
  watcher.Join();
}

}  // namespace

int main(int argc, char** argv) {
  const int signals = BlockedSignals();
  std::signal(SIGPIPE, SIG_IGN);  // OpenSSL writes to connections that the other side has ended
  try {
    const Options options = ReadOptions({argv + 1, argv + argc});
    if (options.help) {
      std::cout << kUsage << simcam::FaultHelp();
      return 0;
    }
    gst_init(nullptr, nullptr);
    Run(options, signals);
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
