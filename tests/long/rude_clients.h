#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "rig/http_client.h"

// Clients that keep connections without asking anything in earnest.

namespace long_tests {

/// Send a request each, a byte a second: half of them drip from the first byte, half from the first byte of the body.
class DrippingClients {
 public:
  DrippingClients(int port, const rig::Headers& login, int count);
  ~DrippingClients();
  DrippingClients(const DrippingClients&) = delete;
  DrippingClients& operator=(const DrippingClients&) = delete;

  /// How many of them are still connected.
  int Connected() const;

 private:
  void Drip();

  std::vector<rig::Connection> connections_;
  std::vector<std::string> rest_;  ///< what each has yet to send
  std::mutex mutex_;
  std::condition_variable stopping_;
  bool isStopped_ = false;
  std::thread thread_;
};

/// Connections over which nothing is sent.
class IdleClients {
 public:
  IdleClients(int port, int count);

  /// How many of them the server has ended.
  int Ended() const;

 private:
  std::vector<rig::Connection> connections_;
};

}  // namespace long_tests
