#include <chrono>

#include "simcam/onvif/operations.h"
#include "simcam/onvif/token_login.h"
#include "simcam/xml_text.h"

namespace simcam {
namespace {

std::string AddressOf(const OnvifCamera& camera, OnvifServiceIndex service) {
  return camera.AddressXml(camera.services + kOnvifServices[service].path);
}

std::string AnalyticsCapabilities(const OnvifCamera& camera) {
  if (!kOnvifServices[kAnalytics].exists(camera.onvif)) return {};
  return "<tt:Analytics><tt:XAddr>" + AddressOf(camera, kAnalytics) +
         "</tt:XAddr><tt:RuleSupport>true</tt:RuleSupport>"
         "<tt:AnalyticsModuleSupport>true</tt:AnalyticsModuleSupport></tt:Analytics>";
}

std::string EventCapabilities(const OnvifCamera& camera) {
  if (!kOnvifServices[kEvents].exists(camera.onvif)) return {};
  return "<tt:Events><tt:XAddr>" + AddressOf(camera, kEvents) +
         "</tt:XAddr><tt:WSSubscriptionPolicySupport>false</tt:WSSubscriptionPolicySupport>"
         "<tt:WSPullPointSupport>true</tt:WSPullPointSupport>"
         "<tt:WSPausableSubscriptionManagerInterfaceSupport>false</tt:WSPausableSubscriptionManagerInterfaceSupport>"
         "</tt:Events>";
}

std::string MediaCapabilities(const OnvifCamera& camera) {
  if (!camera.onvif.media1) return {};
  return "<tt:Media><tt:XAddr>" + AddressOf(camera, kMedia1) +
         "</tt:XAddr><tt:StreamingCapabilities><tt:RTPMulticast>false</tt:RTPMulticast><tt:RTP_TCP>true</tt:RTP_TCP>"
         "<tt:RTP_RTSP_TCP>true</tt:RTP_RTSP_TCP></tt:StreamingCapabilities></tt:Media>";
}

std::string DeviceIoCapabilities(const OnvifCamera& camera) {
  if (!camera.onvif.deviceIo) return {};
  return Fill(
      "<tt:Extension><tt:DeviceIO><tt:XAddr>{address}</tt:XAddr><tt:VideoSources>{channels}</tt:VideoSources>"
      "<tt:VideoOutputs>0</tt:VideoOutputs><tt:AudioSources>{audio}</tt:AudioSources>"
      "<tt:AudioOutputs>0</tt:AudioOutputs><tt:RelayOutputs>0</tt:RelayOutputs></tt:DeviceIO></tt:Extension>",
      {{"address", AddressOf(camera, kDeviceIo)},
       {"channels", camera.onvif.channels},
       {"audio", camera.onvif.audio ? camera.onvif.channels : 0}});
}

}  // namespace

std::string device::GetSystemDateAndTime(const OnvifCamera& camera, const SoapRequest&) {
  const std::chrono::sys_seconds now = CameraTime(camera.onvif);
  const auto day = std::chrono::floor<std::chrono::days>(now);
  const std::chrono::hh_mm_ss time(now - day);
  const std::chrono::year_month_day date(day);
  return Fill(
      "<tds:SystemDateAndTime><tt:DateTimeType>Manual</tt:DateTimeType>"
      "<tt:DaylightSavings>false</tt:DaylightSavings><tt:TimeZone><tt:TZ>UTC0</tt:TZ></tt:TimeZone>"
      "<tt:UTCDateTime><tt:Time><tt:Hour>{hour}</tt:Hour><tt:Minute>{minute}</tt:Minute>"
      "<tt:Second>{second}</tt:Second></tt:Time><tt:Date><tt:Year>{year}</tt:Year><tt:Month>{month}</tt:Month>"
      "<tt:Day>{day}</tt:Day></tt:Date></tt:UTCDateTime>"
      "</tds:SystemDateAndTime>",
      {{"hour", static_cast<int>(time.hours().count())},
       {"minute", static_cast<int>(time.minutes().count())},
       {"second", static_cast<int>(time.seconds().count())},
       {"year", static_cast<int>(date.year())},
       {"month", static_cast<int>(static_cast<unsigned>(date.month()))},
       {"day", static_cast<int>(static_cast<unsigned>(date.day()))}});
}

std::string device::GetDeviceInformation(const OnvifCamera& camera, const SoapRequest&) {
  return Fill(
      "<tds:Manufacturer>simcam</tds:Manufacturer><tds:Model>{model}</tds:Model>"
      "<tds:FirmwareVersion>1.0</tds:FirmwareVersion><tds:SerialNumber>51AC0DE5</tds:SerialNumber>"
      "<tds:HardwareId>simulated</tds:HardwareId>",
      {{"model", Escape(camera.config.name)}});
}

std::string device::GetServices(const OnvifCamera& camera, const SoapRequest& request) {
  if (!camera.onvif.services) throw NotSupported("no such action");
  request.Need("IncludeCapability");
  std::string services;
  for (const OnvifService& service : kOnvifServices) {
    if (!service.exists(camera.onvif)) continue;
    services += Fill(
        "<tds:Service><tds:Namespace>{space}</tds:Namespace><tds:XAddr>{address}</tds:XAddr>"
        "<tds:Version><tt:Major>2</tt:Major><tt:Minor>60</tt:Minor></tds:Version></tds:Service>",
        {{"space", service.space}, {"address", camera.AddressXml(camera.services + service.path)}});
  }
  return services;
}

std::string device::GetCapabilities(const OnvifCamera& camera, const SoapRequest&) {
  return Fill(
      "<tds:Capabilities>{analytics}<tt:Device><tt:XAddr>{device}</tt:XAddr><tt:IO>"
      "<tt:InputConnectors>{inputs}</tt:InputConnectors><tt:RelayOutputs>0</tt:RelayOutputs></tt:IO></tt:Device>"
      "{events}{media}{deviceIo}</tds:Capabilities>",
      {{"analytics", AnalyticsCapabilities(camera)},
       {"device", AddressOf(camera, kDevice)},
       {"inputs", camera.onvif.inputs},
       {"events", EventCapabilities(camera)},
       {"media", MediaCapabilities(camera)},
       {"deviceIo", DeviceIoCapabilities(camera)}});
}

std::string device::GetDigitalInputs(const OnvifCamera& camera, const SoapRequest&) {
  std::string inputs;
  for (int i = 1; i <= camera.onvif.inputs; ++i) {
    inputs += Fill("<tmd:DigitalInputs token=\"DigitalInput_{number}\" IdleState=\"open\"/>", {{"number", i}});
  }
  return inputs;
}

}  // namespace simcam
