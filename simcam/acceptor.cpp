#include "simcam/acceptor.h"

#include <algorithm>
#include <utility>

namespace simcam {

Acceptor::Acceptor(const Socket& listener, Arrive arrive) : listener_(listener), arrive_(std::move(arrive)) {
  listener_.Listen();
  thread_ = std::jthread([this] { AcceptAll(); });
}

Acceptor::~Acceptor() {
  listener_.Shutdown();
  thread_.join();
  for (const Connection& connection : connections_) connection.socket.Shutdown();
}

void Acceptor::AcceptAll() {
  while (true) {
    Socket socket = listener_.Accept();
    if (!socket.IsOpen()) return;
    connections_.remove_if([](const Connection& connection) { return connection.over.load(); });
    Connection& connection = connections_.emplace_back();
    connection.socket = std::move(socket);
    const auto open = std::count_if(connections_.begin(), connections_.end(),
                                    [](const Connection& other) { return other.socket.IsEstablished(); });
    connection.thread = std::jthread([&connection, serve = arrive_(static_cast<int>(open))] {
      serve(connection.socket);
      connection.socket.Shutdown();
      connection.over = true;
    });
  }
}

}  // namespace simcam
