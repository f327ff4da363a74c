#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <mutex>
#include <queue>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "recorder/utility/handle.h"

// Thousands of cameras, each at an address of its own, for the price of one thread: they only answer what a test asks.

namespace bench {

/// Which cameras there are. A camera's answers each come after a time of its own.
struct FleetOptions {
  int cameras = 10'000;
  int silent = 300;    ///< of these: what is sent to them is lost
  int changing = 100;  ///< of these: they have a stream every other time
  std::chrono::milliseconds soonest{10};
  std::chrono::milliseconds latest{10};
};

/// Cameras of model "Simcam RTSP-H264" with user kUser and password kPassword, numbered from 0.
///
/// Owner:   a thread, which ends with it. This process then has a network of its own (see rig::EnterOwnNetwork): it
///          listens at all addresses of that, and adds a route whose packets are lost. Throws std::runtime_error where
///          none can be had.
/// Thread:  one; it has a thread of its own.
class Fleet {
 public:
  static constexpr int kPort = 554;
  static constexpr char kUser[] = "admin";
  static constexpr char kPassword[] = "secret";
  /// Where the silent ones are.
  static constexpr char kSilentRange[] = "198.18.0.0/15";

  explicit Fleet(const FleetOptions& options);
  Fleet(const Fleet&) = delete;
  Fleet& operator=(const Fleet&) = delete;

  std::string HostOf(int camera) const;
  bool IsSilent(int camera) const { return cameras_[static_cast<std::size_t>(camera)].isSilent; }
  int Size() const { return static_cast<int>(cameras_.size()); }

  /// What cameras have seen.
  struct Seen {
    long tests = 0;  ///< connections over which something was asked
    long knocks = 0;
    long refusedLogins = 0;
    int mostAtOnce = 0;  ///< connections that any camera had
  };
  Seen All() const;
  /// How long each camera was talked with when that took longest; 0 for the silent. Forgets it.
  std::vector<std::chrono::milliseconds> TakeLongest();

 private:
  using Time = std::chrono::steady_clock::time_point;
  struct Camera {
    bool isSilent = false;
    bool isChanging = false;
    std::chrono::milliseconds delay{0};
    int open = 0;
    long streamsAsked = 0;
    std::chrono::milliseconds longest{0};
  };
  struct Connection {
    recorder::FileDescriptor socket;
    std::size_t camera = 0;
    Time since;
    std::string received = {};
    bool hasAsked = false;
  };
  struct Reply {
    Time due;
    int socket;
    Time connectedAt;  // tells connections of one number apart
    std::string text;
    bool operator>(const Reply& other) const { return due > other.due; }
  };

  void Deal(const FleetOptions& options);
  void Serve(const std::stop_token& stop);
  void Accept();
  void Hear(int socket);
  void Answer(const Connection& connection, const std::string& request);
  std::string AnswerTo(Camera& camera, const std::string& request);
  void SendDue();
  void End(int socket);

  std::vector<Camera> cameras_;
  std::map<int, Connection> connections_;
  std::priority_queue<Reply, std::vector<Reply>, std::greater<>> replies_;
  recorder::FileDescriptor listener_;
  recorder::FileDescriptor events_;
  mutable std::mutex mutex_;  // of seen_ and of what cameras count
  Seen seen_;
  std::jthread thread_;
};

}  // namespace bench
