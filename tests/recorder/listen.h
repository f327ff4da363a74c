#pragma once

#include <arpa/inet.h>
#include <sys/socket.h>

#include <stdexcept>
#include <string>
#include <utility>

#include "recorder/utility/handle.h"

/// What takes connections at a free port of an address of this machine, and that port. Throws when there is none.
inline std::pair<recorder::FileDescriptor, int> Listen(const std::string& host = "127.0.0.1") {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  inet_pton(AF_INET, host.c_str(), &address.sin_addr);
  socklen_t size = sizeof address;
  auto* const place = reinterpret_cast<sockaddr*>(&address);
  recorder::FileDescriptor listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (bind(listener.Get(), place, size) != 0 || listen(listener.Get(), 16) != 0) throw std::runtime_error("no port");
  getsockname(listener.Get(), place, &size);
  return {std::move(listener), ntohs(address.sin_port)};
}
