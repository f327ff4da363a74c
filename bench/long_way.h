#pragma once

#include <chrono>
#include <stop_token>
#include <thread>
#include <vector>

#include "rig/http_client.h"

namespace bench {

/// The way to a camera that is far off. TCP connections to Port() lead to a camera at 127.0.0.1, any number at once,
/// and what goes through them arrives later by `delay` in each direction, however much it is. The handshake of this end
/// takes no time, so that what a client says first waits for that round trip, too.
class LongWay {
 public:
  LongWay(int cameraPort, std::chrono::milliseconds delay);

  int Port() const;

 private:
  using Stopping = const std::stop_token&;

  void Accept(Stopping stop);
  void Carry(Stopping stop, const rig::Connection& client) const;

  const int cameraPort_;
  const std::chrono::milliseconds delay_;
  const recorder::FileDescriptor listener_;
  std::vector<std::jthread> carriers_;  // one a connection
  std::jthread acceptor_;               // ends first
};

}  // namespace bench
