#include "simcam/onvif/discovery.h"

#include <netinet/in.h>

#include <algorithm>
#include <array>
#include <stdexcept>

#include "simcam/onvif/soap.h"
#include "simcam/xml_text.h"

namespace simcam {
namespace {

constexpr const char* kSpace = "http://schemas.xmlsoap.org/ws/2005/04/discovery";
constexpr const char* kGroup = "239.255.255.250";
constexpr guint16 kPort = 3702;

/// Throws what GLib says.
void Check(gboolean done, GError* error) {
  if (done != 0) return;
  const std::string reason = error->message;
  g_error_free(error);
  throw std::runtime_error("discovery: " + reason);
}

/// A text as one segment of a scope, in which only letters and digits stand for themselves.
std::string Segment(const std::string& text) {
  const GlibText escaped(g_uri_escape_string(text.c_str(), nullptr, FALSE));
  return escaped.get();
}

/// True for a probe that asks for devices like us, or for whatever is there.
bool MeansUs(const SoapRequest& probe) {
  constexpr const char* kTypes[] = {"{http://www.onvif.org/ver10/network/wsdl}NetworkVideoTransmitter",
                                    "{http://www.onvif.org/ver10/device/wsdl}Device"};
  return std::all_of(probe.types.begin(), probe.types.end(), [&](const std::string& type) {
    return std::find(std::begin(kTypes), std::end(kTypes), type) != std::end(kTypes);
  });
}

}  // namespace

Discovery::Discovery(const CameraConfig& camera, int port)
    : camera_(camera),
      address_("http://127.0.0.1:" + std::to_string(port) + "/onvif/device_service"),
      endpoint_(RandomUuid()),
      end_(g_cancellable_new()) {
  GError* error = nullptr;
  socket_.reset(g_socket_new(G_SOCKET_FAMILY_IPV4, G_SOCKET_TYPE_DATAGRAM, G_SOCKET_PROTOCOL_UDP, &error));
  Check(socket_ != nullptr, error);
  const std::unique_ptr<GInetAddress, UnrefGlib> group(g_inet_address_new_from_string(kGroup));
  const std::unique_ptr<GSocketAddress, UnrefGlib> bound(g_inet_socket_address_new(group.get(), kPort));
  // Linux hands out what any program has joined for, from any network, unless told not to.
  Check(g_socket_set_option(socket_.get(), IPPROTO_IP, IP_MULTICAST_ALL, 0, &error), error);
  Check(g_socket_bind(socket_.get(), bound.get(), TRUE, &error), error);
  Check(g_socket_join_multicast_group(socket_.get(), group.get(), FALSE, "lo", &error), error);
  thread_ = std::jthread([this] { AnswerAll(); });
}

Discovery::~Discovery() {
  g_cancellable_cancel(end_.get());
  thread_.join();
}

void Discovery::AnswerAll() {
  std::array<char, 65536> bytes{};
  while (g_cancellable_is_cancelled(end_.get()) == 0) {
    GSocketAddress* from = nullptr;
    const gssize size = g_socket_receive_from(socket_.get(), &from, bytes.data(), bytes.size(), end_.get(), nullptr);
    const std::unique_ptr<GSocketAddress, UnrefGlib> sender(from);
    if (size <= 0) continue;
    const std::string answer = Matches({bytes.data(), static_cast<size_t>(size)});
    if (!answer.empty()) {
      g_socket_send_to(socket_.get(), sender.get(), answer.data(), answer.size(), nullptr, nullptr);
    }
  }
}

/// The answer to a probe; empty for what is none, or not for us.
std::string Discovery::Matches(const std::string& probe) const {
  const auto soap = ReadSoap(probe);
  if (!soap || soap->space != kSpace || soap->name != "Probe" || soap->action != std::string(kSpace) + "/Probe" ||
      soap->messageId.empty() || !MeansUs(*soap)) {
    return {};
  }
  const std::string header = Fill(
      "<wsa:MessageID>urn:uuid:{id}</wsa:MessageID><wsa:RelatesTo>{probe}</wsa:RelatesTo>"
      "<wsa:To>http://schemas.xmlsoap.org/ws/2004/08/addressing/role/anonymous</wsa:To>"
      "<wsa:Action>{space}/ProbeMatches</wsa:Action>",
      {{"id", RandomUuid()}, {"probe", Escape(soap->messageId)}, {"space", kSpace}});
  return SoapAnswer(
      Fill("<d:ProbeMatches><d:ProbeMatch><wsa:EndpointReference><wsa:Address>urn:uuid:{endpoint}</wsa:Address>"
           "</wsa:EndpointReference><d:Types>dn:NetworkVideoTransmitter tds:Device</d:Types><d:Scopes>"
           "onvif://www.onvif.org/type/video_encoder onvif://www.onvif.org/hardware/simcam "
           "onvif://www.onvif.org/name/{name}</d:Scopes><d:XAddrs>{address}</d:XAddrs>"
           "<d:MetadataVersion>1</d:MetadataVersion></d:ProbeMatch></d:ProbeMatches>",
           {{"endpoint", endpoint_}, {"name", Segment(camera_.name)}, {"address", address_}}),
      Prefixes::kUsual, header);
}

}  // namespace simcam
