#pragma once

#include <openssl/ssl.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>

#include "recorder/net/socket.h"

namespace recorder {

using TlsHandle = std::unique_ptr<SSL, Deleter<SSL_free>>;

/// The SHA-256 of the DER of the certificate that the other side of `tls` has proven, in hexadecimal; "" for none.
std::string CertificateOf(const SSL& tls);

/// A Socket that can go on inside TLS (1.2 or newer, RFC 8446). Whom it speaks with is for the caller to judge, by the
/// certificate, before anything is written.
///
/// Owner:   the connection, as a Socket does.
/// Thread:  one at a time.
/// Time:    no call outlasts its deadline.
/// Failure: as a Socket; what breaks TLS is like the end of the connection.
class TlsSocket {
 public:
  /// As Socket::Connect; without TLS.
  [[nodiscard]] Outcome Connect(const std::string& host, int port, Clock::time_point deadline);

  /// Goes on inside TLS, with `host` as the name of whom we look for. kNotThisProtocol, and logged: the camera does not
  /// speak it, or not in a way that we know.
  [[nodiscard]] Outcome BeginTls(const std::string& host, Clock::time_point deadline);

  /// Of the camera, as CertificateOf; "" without TLS.
  std::string Certificate() const;

  [[nodiscard]] Outcome Write(std::span<const std::uint8_t> bytes, Clock::time_point deadline);

  /// As Socket::Read. kTimedOut also when all that came was TLS's own.
  [[nodiscard]] Outcome Read(std::span<std::uint8_t> space, Clock::time_point deadline, std::size_t& received);

  /// How many bytes have come since the last call, those of TLS included.
  std::size_t TakeCount() { return std::exchange(count_, 0); }

  bool WasClosedUnread() const { return socket_.WasClosedUnread(); }

  /// To wait for, beside others, without TLS.
  int Descriptor() const { return socket_.Descriptor(); }

 private:
  [[nodiscard]] Outcome Shake(Clock::time_point deadline);
  bool WantsMore(int result) const;
  [[nodiscard]] Outcome SendPending(Clock::time_point deadline);
  [[nodiscard]] Outcome Feed(Clock::time_point deadline);

  Socket socket_;
  TlsHandle tls_;  // reads and writes memory; null without TLS
  std::size_t count_ = 0;
};

}  // namespace recorder
