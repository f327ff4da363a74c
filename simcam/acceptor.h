#pragma once

#include <atomic>
#include <functional>
#include <list>
#include <thread>

#include "simcam/socket.h"

namespace simcam {

/// Takes the connections that come to a bound socket, a thread for each, from construction to destruction, which ends
/// them all.
class Acceptor {
 public:
  /// Talks to one client until either side ends; it may take the socket.
  using Serve = std::function<void(Socket&)>;
  /// Called for each connection as it comes, one after the other, with the number of those here that neither side has
  /// ended, the new one included. What it returns is called on the connection's thread.
  using Arrive = std::function<Serve(int open)>;

  Acceptor(const Socket& listener, Arrive arrive);
  ~Acceptor();
  Acceptor(const Acceptor&) = delete;
  Acceptor& operator=(const Acceptor&) = delete;

 private:
  struct Connection {
    Socket socket;
    std::atomic<bool> over = false;
    std::jthread thread;
  };

  void AcceptAll();

  const Socket& listener_;
  const Arrive arrive_;
  std::list<Connection> connections_;  ///< the thread's, and the destructor's after it
  std::jthread thread_;
};

}  // namespace simcam
