#include "recorder/ctl/serve/listen_address.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <array>

#include "recorder/net/camera_address.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

/// The one form of a numeric address; "" for any other text.
std::string ShortestForm(int family, const std::string& host) {
  std::array<unsigned char, sizeof(in6_addr)> bytes{};
  std::array<char, INET6_ADDRSTRLEN> text{};
  if (inet_pton(family, host.c_str(), bytes.data()) != 1) return "";
  return inet_ntop(family, bytes.data(), text.data(), text.size());
}

}  // namespace

std::optional<ListenAddress> ParseListenAddress(const std::string& text) {
  const std::size_t colon = text.rfind(':');
  if (colon == std::string::npos) return std::nullopt;
  const std::string host = text.substr(0, colon);
  const std::string bare(WithoutBrackets(host));
  ListenAddress address{ShortestForm(bare == host ? AF_INET : AF_INET6, bare)};
  const auto port = ParseNumber<int>(std::string_view(text).substr(colon + 1));
  if (address.host.empty() || !port || *port < 0 || *port > kLargestPort) return std::nullopt;
  address.port = *port;
  return address;
}

}  // namespace recorder
