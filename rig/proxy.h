#pragma once

#include <chrono>
#include <cstddef>
#include <mutex>
#include <stop_token>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "rig/http_client.h"

namespace rig {

/// What goes wrong on the way to a camera, or with the bytes that come from it, counted over all connections.
struct NetworkFault {
  static constexpr std::size_t kNever = std::string::npos;

  bool isRefusing = false;           ///< nothing listens
  bool isFull = false;               ///< the queue of connections is full, and none is accepted
  std::size_t delayMs = 0;           ///< each piece comes so late
  std::size_t sliceSize = kNever;    ///< of each piece, in bytes
  std::size_t cutAfter = kNever;     ///< this connection and every later one is closed where the next byte would come
  std::size_t corruptByte = kNever;  ///< comes with all its bits flipped
};

/// The network before a camera: TCP connections to a free port lead to a camera at 127.0.0.1, one after the other, as
/// the recorder has them.
class Proxy {
 public:
  /// At `host`, a numeric address; throws when it is none of this machine's. Refuses connections for now.
  explicit Proxy(const std::string& host = "127.0.0.1") : host_(host), reserved_(Bind()) {}
  ~Proxy() { Stop(); }
  Proxy(const Proxy&) = delete;
  Proxy& operator=(const Proxy&) = delete;

  int Port() const;

  /// Closes all connections. Those that follow lead to `cameraPort`, and counting begins anew.
  void LeadTo(int cameraPort, NetworkFault fault = {});

  /// What was asked in one piece, and the bytes that were handed on from the camera from then on.
  struct Exchange {
    std::string asked;
    std::string passed;
  };
  std::vector<Exchange> Exchanges() const;
  /// All bytes that were handed on from the camera.
  std::string Passed() const;

 private:
  using Descriptor = recorder::FileDescriptor;
  using Stopping = const std::stop_token&;

  void Stop();
  Descriptor Bind() const;
  void Fill();
  void Accept(Stopping stop);
  void Carry(Stopping stop, const Connection& client);
  bool HandOn(Stopping stop, const Connection& client, std::string bytes);
  bool Pass(const Connection& client, std::string_view bytes);

  const std::string host_;
  const Descriptor reserved_;  // never listens, but keeps the port
  Descriptor listener_;
  std::vector<Descriptor> waiting_;  // connections that fill a queue
  int cameraPort_ = 0;
  NetworkFault fault_;
  mutable std::mutex mutex_;
  std::vector<Exchange> exchanges_;  // under the mutex; what comes before anything was asked belongs to the first
  std::jthread acceptor_;
};

}  // namespace rig
