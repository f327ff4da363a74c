#include "recorder/device/asked/onvif/answers.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/device.h"
#include "recorder/device/asked/onvif/numbers.h"
#include "recorder/net/camera_url.h"
#include "recorder/net/percent.h"
#include "recorder/utility/text.h"

namespace recorder::onvif {
namespace {

/// The descendant to which `names` of ONVIF's schema lead.
XmlElement Below(XmlElement element, std::initializer_list<std::string_view> names) {
  for (const std::string_view name : names) element = element.Child(kSchemaNamespace, name);
  return element;
}

std::optional<std::chrono::sys_seconds> TimeOf(XmlElement dateTime) {
  const auto number = [dateTime](std::string_view part, std::string_view name, int min, int max) {
    return WholeNumber(Below(dateTime, {part, name}).Text(), min, max);
  };
  const auto year = number("Date", "Year", 1970, 9999);
  const auto month = number("Date", "Month", 1, 12);
  const auto day = number("Date", "Day", 1, 31);
  const auto hour = number("Time", "Hour", 0, 23);
  const auto minute = number("Time", "Minute", 0, 59);
  const auto second = number("Time", "Second", 0, 60);
  if (!year || !month || !day || !hour || !minute || !second) return std::nullopt;
  const std::chrono::year_month_day date(std::chrono::year(*year), std::chrono::month(static_cast<unsigned>(*month)),
                                         std::chrono::day(static_cast<unsigned>(*day)));
  if (!date.ok()) return std::nullopt;
  return std::chrono::sys_days(date) + std::chrono::hours(*hour) + std::chrono::minutes(*minute) +
         std::chrono::seconds(*second);
}

/// Path of the service at `address`, whose port becomes that of `services` unless they have one.
std::string ServicePath(const std::string& address, ServicePaths& services) {
  if (const auto url = ParseCameraUrl(address)) {
    if (services.port == 0) services.port = url->port;
    return url->path;
  }
  return address.starts_with('/') ? PercentEncoded(address, kAddressSigns) : "";
}

std::optional<unsigned int> ReadRtspProtocols(XmlElement streaming) {
  if (!streaming) return std::nullopt;
  const auto bit = [streaming](std::string_view name, RTSP_PROTOCOL protocol) {
    const std::string value = Below(streaming, {name}).Text();
    return value == "true" || value == "1" ? 1U << protocol : 0U;
  };
  return 1U << RTSP_PROTOCOL_UDP |  // every camera must have it
         bit("RTP_RTSP_TCP", RTSP_PROTOCOL_TCP) | bit("RTPMulticast", RTSP_PROTOCOL_MULTICAST);
}

}  // namespace

std::optional<std::chrono::sys_seconds> ReadClock(XmlElement answer) {
  const XmlElement clock = answer.Child(kDeviceNamespace, "SystemDateAndTime");
  if (const auto time = TimeOf(Below(clock, {"UTCDateTime"}))) return time;
  return TimeOf(Below(clock, {"LocalDateTime"}));
}

ServicePaths ReadServices(XmlElement answer) {
  constexpr std::pair<std::string_view, std::string ServicePaths::*> kServices[] = {
      {kMedia1Namespace, &ServicePaths::media1},
      {kMedia2Namespace, &ServicePaths::media2},
      {kDeviceIoNamespace, &ServicePaths::deviceIo},
      {kEventsNamespace, &ServicePaths::events},
  };
  ServicePaths services;
  for (const XmlElement service : answer.Children(kDeviceNamespace, "Service")) {
    const std::string nameSpace = service.Child(kDeviceNamespace, "Namespace").Text();
    for (const auto& [known, path] : kServices) {
      if (!EqualsIgnoreCase(nameSpace, known)) continue;
      services.*path = ServicePath(service.Child(kDeviceNamespace, "XAddr").Text(), services);
    }
  }
  return services;
}

Capabilities ReadCapabilities(XmlElement answer) {
  constexpr int kMostInputs = 1024;
  const XmlElement all = answer.Child(kDeviceNamespace, "Capabilities");
  Capabilities capabilities;
  ServicePaths& services = capabilities.services;
  services.media1 = ServicePath(Below(all, {"Media", "XAddr"}).Text(), services);
  services.deviceIo = ServicePath(Below(all, {"Extension", "DeviceIO", "XAddr"}).Text(), services);
  services.events = ServicePath(Below(all, {"Events", "XAddr"}).Text(), services);
  capabilities.digitalInputs = WholeNumber(Below(all, {"Device", "IO", "InputConnectors"}).Text(), 0, kMostInputs);
  capabilities.rtspProtocols = ReadRtspProtocols(Below(all, {"Media", "StreamingCapabilities"}));
  return capabilities;
}

DeviceFacts ReadDeviceFacts(XmlElement answer) {
  const auto text = [answer](std::string_view name) { return answer.Child(kDeviceNamespace, name).Text(); };
  return {text("Manufacturer"), text("Model"), text("FirmwareVersion"), text("SerialNumber")};
}

std::string ReadDevice(XmlElement answer) {
  return answer.ChildTexts(kDeviceNamespace, {"Manufacturer", "Model", "FirmwareVersion"});
}

bool OffersAudio(XmlElement answer, const Service& media) {
  const bool isMedia2 = media.nameSpace == kMedia2Namespace;
  const std::vector<XmlElement> options =
      isMedia2 ? answer.Children(kMedia2Namespace, "Options")
               : answer.Child(kMedia1Namespace, "Options").Children(kSchemaNamespace, "Options");
  return std::any_of(options.begin(), options.end(),
                     [](XmlElement option) { return !Below(option, {"Encoding"}).Text().empty(); });
}

std::string ReadUri(XmlElement answer) {
  const XmlElement uri = answer.Child(kMedia2Namespace, "Uri");
  return uri ? uri.Text() : Below(answer.Child(kMedia1Namespace, "MediaUri"), {"Uri"}).Text();
}

int CountDigitalInputs(XmlElement answer) {
  return static_cast<int>(answer.Children(kDeviceIoNamespace, "DigitalInputs").size());
}

}  // namespace recorder::onvif
