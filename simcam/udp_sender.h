#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "simcam/fault.h"
#include "simcam/socket.h"

namespace simcam {

/// What a SETUP gets.
struct Granted {
  int status = 200;
  std::string transport;  ///< the header's value; "" for none
};

/// A camera's end of RTP over UDP (RFC 2326, section 10.1; RFC 3550, section 11), with what its fault does to that. Its
/// ports are there from construction to destruction. Single-threaded.
class UdpSender {
 public:
  /// To the ports `clientPort` (RTP) and the next (RTCP) of 127.0.0.1. Throws std::system_error.
  UdpSender(int clientPort, Fault fault);

  [[nodiscard]] Granted Grant() const;

  void SendUnit(const std::vector<std::string>& packets);
  void SendReport(const std::string& report) const;
  /// An RTCP packet of the client's, if one has come.
  [[nodiscard]] std::optional<std::string> Receive() const;

 private:
  void Send(const std::string& packet);
  bool IsLetThrough();

  const int clientPort_;
  const Fault fault_;
  const Socket rtp_;
  const Socket rtcp_;
  const Socket elsewhere_;  ///< what some faults send from
  bool hasHeard_ = false;   ///< from the client's port of RTP
  std::string held_;
  std::uint64_t sent_ = 0;
};

}  // namespace simcam
