#include "simcam/transport.h"

#include <cstdlib>
#include <string_view>

namespace simcam {
namespace {

constexpr int kNobodysPort = 5000;

/// The number behind `name` in a header, 0 where there is none.
int NumberIn(const std::string& header, std::string_view name) {
  const size_t at = header.find(name);
  return at == std::string::npos ? 0 : std::atoi(header.c_str() + at + name.size());  // NOLINT(cert-err34-c)
}

}  // namespace

Granted Transport::Grant(const std::string& wish, bool isUdpAlone) {
  const bool isTcp = wish.find("RTP/AVP/TCP") != std::string::npos;
  if (isTcp && fault_.method == "TCP") return {fault_.status, {}};
  if (isTcp && fault_.fault == Fault::kUdpAnswer) return UdpSender(kNobodysPort, fault_.fault).Grant();
  if (isTcp == (isUdpAlone || SendsOverUdp(fault_))) return {461, {}};
  return isTcp ? GrantChannels(wish) : udp_.emplace(NumberIn(wish, "client_port="), fault_.fault).Grant();
}

Granted Transport::GrantChannels(const std::string& wish) {
  channel_ = fault_.fault == Fault::kOtherChannels ? 4 : NumberIn(wish, "interleaved=");
  return {200, "RTP/AVP/TCP;unicast;interleaved=" + std::to_string(channel_) + "-" + std::to_string(channel_ + 1) +
                   ";ssrc=51AC0DE5"};
}

}  // namespace simcam
