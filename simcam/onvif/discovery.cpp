#include "simcam/onvif/discovery.h"

#include <algorithm>

#include "simcam/onvif/soap.h"
#include "simcam/xml_text.h"

namespace simcam {
namespace {

constexpr const char* kSpace = "http://schemas.xmlsoap.org/ws/2005/04/discovery";
constexpr const char* kGroup = "239.255.255.250";
constexpr guint16 kPort = 3702;

/// The same for the same name: a camera keeps its id.
std::string UuidOf(const std::string& name) {
  std::string uuid = GlibText(g_compute_checksum_for_string(G_CHECKSUM_MD5, name.c_str(), -1)).get();
  for (const std::size_t at : {8U, 13U, 18U, 23U}) uuid.insert(at, "-");
  return uuid;
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
      endpoint_(UuidOf(camera.name)),
      answers_(kGroup, kPort, [this](const std::string& probe) { return Matches(probe); }) {}

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
