#include <chrono>

#include "simcam/onvif_answers.h"
#include "simcam/token_login.h"
#include "simcam/xml_text.h"

namespace simcam {

const OnvifService kDeviceService = {"http://www.onvif.org/ver10/device/wsdl", "/onvif/device_service",
                                     "http://www.onvif.org/ver10/device/wsdl/",
                                     [](const OnvifConfig&) { return true; }};
const OnvifService kMedia1Service = {"http://www.onvif.org/ver10/media/wsdl", "/onvif/media_service",
                                     "http://www.onvif.org/ver10/media/wsdl/",
                                     [](const OnvifConfig& onvif) { return onvif.media1; }};
const OnvifService kMedia2Service = {"http://www.onvif.org/ver20/media/wsdl", "/onvif/media2_service",
                                     "http://www.onvif.org/ver20/media/wsdl/",
                                     [](const OnvifConfig& onvif) { return onvif.media2; }};
// The action has another spelling than the namespace, as it was published.
const OnvifService kDeviceIoService = {"http://www.onvif.org/ver10/deviceIO/wsdl", "/onvif/deviceio_service",
                                       "http://www.onvif.org/ver10/deviceio/wsdl/",
                                       [](const OnvifConfig& onvif) { return onvif.deviceIo; }};
const OnvifService kAnalyticsService = {"http://www.onvif.org/ver20/analytics/wsdl", "/onvif/analytics_service",
                                        "http://www.onvif.org/ver20/analytics/wsdl/",
                                        [](const OnvifConfig& onvif) { return onvif.motion == Motion::kAnalytics; }};
const OnvifService kEventService = {"http://www.onvif.org/ver10/events/wsdl", "/onvif/event_service",
                                    "http://www.onvif.org/ver10/events/wsdl/EventPortType/",
                                    [](const OnvifConfig& onvif) { return onvif.motion == Motion::kEvents; }};

namespace {

std::string AddressOf(const OnvifCamera& camera, const OnvifService& service) {
  return camera.AddressXml(camera.services + service.path);
}

std::string GetSystemDateAndTime(const OnvifCamera& camera, const SoapRequest&) {
  const std::chrono::sys_seconds now = CameraTime(camera.onvif);
  const auto day = std::chrono::floor<std::chrono::days>(now);
  const std::chrono::hh_mm_ss time(now - day);
  const std::chrono::year_month_day date(day);
  return Fill(
      "<tds:GetSystemDateAndTimeResponse><tds:SystemDateAndTime><tt:DateTimeType>Manual</tt:DateTimeType>"
      "<tt:DaylightSavings>false</tt:DaylightSavings><tt:TimeZone><tt:TZ>UTC0</tt:TZ></tt:TimeZone>"
      "<tt:UTCDateTime><tt:Time><tt:Hour>{hour}</tt:Hour><tt:Minute>{minute}</tt:Minute>"
      "<tt:Second>{second}</tt:Second></tt:Time><tt:Date><tt:Year>{year}</tt:Year><tt:Month>{month}</tt:Month>"
      "<tt:Day>{day}</tt:Day></tt:Date></tt:UTCDateTime>"
      "</tds:SystemDateAndTime></tds:GetSystemDateAndTimeResponse>",
      {{"hour", static_cast<int>(time.hours().count())},
       {"minute", static_cast<int>(time.minutes().count())},
       {"second", static_cast<int>(time.seconds().count())},
       {"year", static_cast<int>(date.year())},
       {"month", static_cast<int>(static_cast<unsigned>(date.month()))},
       {"day", static_cast<int>(static_cast<unsigned>(date.day()))}});
}

std::string GetDeviceInformation(const OnvifCamera& camera, const SoapRequest&) {
  return Fill(
      "<tds:GetDeviceInformationResponse><tds:Manufacturer>simcam</tds:Manufacturer><tds:Model>{model}</tds:Model>"
      "<tds:FirmwareVersion>1.0</tds:FirmwareVersion><tds:SerialNumber>51AC0DE5</tds:SerialNumber>"
      "<tds:HardwareId>simulated</tds:HardwareId></tds:GetDeviceInformationResponse>",
      {{"model", Escape(camera.config.name)}});
}

std::string GetServices(const OnvifCamera& camera, const SoapRequest& request) {
  if (!camera.onvif.services) throw SoapFault(500, "env:Receiver", "ter:ActionNotSupported", "no such action");
  request.Need("IncludeCapability");
  std::string services;
  for (const OnvifService* service :
       {&kDeviceService, &kMedia1Service, &kMedia2Service, &kDeviceIoService, &kAnalyticsService, &kEventService}) {
    if (!service->exists(camera.onvif)) continue;
    services += Fill(
        "<tds:Service><tds:Namespace>{space}</tds:Namespace><tds:XAddr>{address}</tds:XAddr>"
        "<tds:Version><tt:Major>2</tt:Major><tt:Minor>60</tt:Minor></tds:Version></tds:Service>",
        {{"space", service->space}, {"address", AddressOf(camera, *service)}});
  }
  return "<tds:GetServicesResponse>" + services + "</tds:GetServicesResponse>";
}

std::string AnalyticsCapabilities(const OnvifCamera& camera) {
  if (!kAnalyticsService.exists(camera.onvif)) return {};
  return "<tt:Analytics><tt:XAddr>" + AddressOf(camera, kAnalyticsService) +
         "</tt:XAddr><tt:RuleSupport>true</tt:RuleSupport>"
         "<tt:AnalyticsModuleSupport>true</tt:AnalyticsModuleSupport></tt:Analytics>";
}

std::string EventCapabilities(const OnvifCamera& camera) {
  if (!kEventService.exists(camera.onvif)) return {};
  return "<tt:Events><tt:XAddr>" + AddressOf(camera, kEventService) +
         "</tt:XAddr><tt:WSSubscriptionPolicySupport>false</tt:WSSubscriptionPolicySupport>"
         "<tt:WSPullPointSupport>true</tt:WSPullPointSupport>"
         "<tt:WSPausableSubscriptionManagerInterfaceSupport>false</tt:WSPausableSubscriptionManagerInterfaceSupport>"
         "</tt:Events>";
}

std::string MediaCapabilities(const OnvifCamera& camera) {
  if (!camera.onvif.media1) return {};
  return "<tt:Media><tt:XAddr>" + AddressOf(camera, kMedia1Service) +
         "</tt:XAddr><tt:StreamingCapabilities><tt:RTPMulticast>false</tt:RTPMulticast><tt:RTP_TCP>true</tt:RTP_TCP>"
         "<tt:RTP_RTSP_TCP>true</tt:RTP_RTSP_TCP></tt:StreamingCapabilities></tt:Media>";
}

std::string DeviceIoCapabilities(const OnvifCamera& camera) {
  if (!camera.onvif.deviceIo) return {};
  return Fill(
      "<tt:Extension><tt:DeviceIO><tt:XAddr>{address}</tt:XAddr><tt:VideoSources>{channels}</tt:VideoSources>"
      "<tt:VideoOutputs>0</tt:VideoOutputs><tt:AudioSources>{audio}</tt:AudioSources>"
      "<tt:AudioOutputs>0</tt:AudioOutputs><tt:RelayOutputs>0</tt:RelayOutputs></tt:DeviceIO></tt:Extension>",
      {{"address", AddressOf(camera, kDeviceIoService)},
       {"channels", camera.onvif.channels},
       {"audio", camera.onvif.audio ? camera.onvif.channels : 0}});
}

std::string GetCapabilities(const OnvifCamera& camera, const SoapRequest&) {
  return Fill(
      "<tds:GetCapabilitiesResponse><tds:Capabilities>{analytics}<tt:Device><tt:XAddr>{device}</tt:XAddr><tt:IO>"
      "<tt:InputConnectors>{inputs}</tt:InputConnectors><tt:RelayOutputs>0</tt:RelayOutputs></tt:IO></tt:Device>"
      "{events}{media}{deviceIo}</tds:Capabilities></tds:GetCapabilitiesResponse>",
      {{"analytics", AnalyticsCapabilities(camera)},
       {"device", AddressOf(camera, kDeviceService)},
       {"inputs", camera.onvif.inputs},
       {"events", EventCapabilities(camera)},
       {"media", MediaCapabilities(camera)},
       {"deviceIo", DeviceIoCapabilities(camera)}});
}

std::string GetDigitalInputs(const OnvifCamera& camera, const SoapRequest&) {
  std::string inputs;
  for (int i = 1; i <= camera.onvif.inputs; ++i) {
    inputs += Fill("<tmd:DigitalInputs token=\"DigitalInput_{number}\" IdleState=\"open\"/>", {{"number", i}});
  }
  return "<tmd:GetDigitalInputsResponse>" + inputs + "</tmd:GetDigitalInputsResponse>";
}

/// Below the first one, topics have no namespace.
std::string GetEventProperties(const OnvifCamera&, const SoapRequest&) {
  return "<tev:GetEventPropertiesResponse>"
         "<tev:TopicNamespaceLocation>http://www.onvif.org/onvif/ver10/topics/topicns.xml</tev:TopicNamespaceLocation>"
         "<wsnt:FixedTopicSet>true</wsnt:FixedTopicSet><wstop:TopicSet><tns1:RuleEngine><CellMotionDetector>"
         "<Motion wstop:topic=\"true\"><tt:MessageDescription IsProperty=\"true\"><tt:Source>"
         "<tt:SimpleItemDescription Name=\"VideoSourceConfigurationToken\" Type=\"tt:ReferenceToken\"/>"
         "<tt:SimpleItemDescription Name=\"VideoAnalyticsConfigurationToken\" Type=\"tt:ReferenceToken\"/>"
         "<tt:SimpleItemDescription Name=\"Rule\" Type=\"xs:string\"/></tt:Source><tt:Data>"
         "<tt:SimpleItemDescription Name=\"IsMotion\" Type=\"xs:boolean\"/></tt:Data></tt:MessageDescription></Motion>"
         "</CellMotionDetector></tns1:RuleEngine></wstop:TopicSet>"
         "<wsnt:TopicExpressionDialect>http://www.onvif.org/ver10/tev/topicExpression/ConcreteSet"
         "</wsnt:TopicExpressionDialect>"
         "<wsnt:TopicExpressionDialect>http://docs.oasis-open.org/wsn/t-1/TopicExpression/Concrete"
         "</wsnt:TopicExpressionDialect>"
         "<tev:MessageContentFilterDialect>http://www.onvif.org/ver10/tev/messageContentFilter/ItemFilter"
         "</tev:MessageContentFilterDialect>"
         "<tev:MessageContentSchemaLocation>http://www.onvif.org/onvif/ver10/schema/onvif.xsd"
         "</tev:MessageContentSchemaLocation></tev:GetEventPropertiesResponse>";
}

}  // namespace

std::string OnvifCamera::AddressXml(const std::string& address) const {
  return onvif.badAmpersand ? address : Escape(address);
}

const std::vector<OnvifOperation>& DeviceOperations() {
  static const std::vector<OnvifOperation> operations = {{kDeviceService, "GetSystemDateAndTime", GetSystemDateAndTime},
                                                         {kDeviceService, "GetDeviceInformation", GetDeviceInformation},
                                                         {kDeviceService, "GetServices", GetServices},
                                                         {kDeviceService, "GetCapabilities", GetCapabilities},
                                                         {kDeviceIoService, "GetDigitalInputs", GetDigitalInputs},
                                                         {kEventService, "GetEventProperties", GetEventProperties}};
  return operations;
}

}  // namespace simcam
