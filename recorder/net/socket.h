#pragma once

#include <sys/socket.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "recorder/request/request_scope.h"
#include "recorder/utility/handle.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// Begins a connection to `address`, as far as the recorder's address policy allows it. All connections to cameras are
/// made here. Nothing: it is under way, and has ended when `connection` may be written; EndOfConnecting tells how. Else
/// kOk: it is there; kBlocked: the policy does not allow it; kUnreachable: refused, or no route. The descriptor does
/// not block and is not inherited by child processes.
[[nodiscard]] std::optional<Outcome> BeginConnecting(const sockaddr& address, socklen_t size,
                                                     FileDescriptor& connection);

/// How a connection that was begun has ended: kOk, kUnreachable or kTimedOut.
[[nodiscard]] Outcome EndOfConnecting(const FileDescriptor& connection);

/// Connects to the first address of `host` that accepts, by BeginConnecting. On failure `connection` is untouched.
/// kUnreachable: no such name, no route, refused everywhere; kBlocked: the policy allows none of its addresses;
/// kTimedOut: the deadline, or an address's share of it, passed without an answer.
[[nodiscard]] Outcome ConnectTo(const std::string& host, int port, Clock::time_point deadline,
                                FileDescriptor& connection);

/// How many bytes have come over the TCP connection `connection`, whatever was read of them; 0 when that is not known.
[[nodiscard]] std::uint64_t BytesReceived(int connection);

/// One TCP connection to a camera. Never blocks past the deadline that a call is given, the name's lookup included, and
/// is not inherited by child processes. Used by one thread at a time; closed by the destructor.
class Socket {
 public:
  /// As ConnectTo. An earlier connection is closed.
  [[nodiscard]] Outcome Connect(const std::string& host, int port, Clock::time_point deadline);

  /// Sends all of `bytes`. kNotUnderstood: the camera closed the connection.
  [[nodiscard]] Outcome Write(std::span<const std::uint8_t> bytes, Clock::time_point deadline);

  /// Waits for bytes and stores up to `space.size()` of them; `received` is 0 when the camera has closed the
  /// connection.
  [[nodiscard]] Outcome Read(std::span<std::uint8_t> space, Clock::time_point deadline, std::size_t& received);

  /// True when the camera, which has closed the connection, cannot have read all that was written, since its system
  /// confirmed less. False when that is not known, as after a reset.
  [[nodiscard]] bool WasClosedUnread() const;

  /// To wait for, beside others.
  int Descriptor() const { return descriptor_.Get(); }

 private:
  FileDescriptor descriptor_;
  std::uint64_t written_ = 0;  // bytes
  bool hasFailed_ = false;     // a reading or writing, without the camera's orderly end
};

}  // namespace recorder
