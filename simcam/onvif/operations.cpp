#include "simcam/onvif/operations.h"

#include "simcam/xml_text.h"

namespace simcam {
namespace {

struct Operation {
  OnvifServiceIndex service;
  const char* name;
  OnvifAnswer* answer;
};

constexpr Operation kOperations[] = {
    {kDevice, "GetSystemDateAndTime", device::GetSystemDateAndTime},
    {kDevice, "GetDeviceInformation", device::GetDeviceInformation},
    {kDevice, "GetServices", device::GetServices},
    {kDevice, "GetCapabilities", device::GetCapabilities},
    {kDeviceIo, "GetDigitalInputs", device::GetDigitalInputs},
    {kEvents, "GetEventProperties", motion::GetEventProperties},
    {kMedia1, "GetProfiles", media1::GetProfiles},
    {kMedia1, "GetVideoEncoderConfigurationOptions", media1::GetVideoEncoderConfigurationOptions},
    {kMedia1, "GetAudioEncoderConfigurationOptions", media1::GetAudioEncoderConfigurationOptions},
    {kMedia1, "GetStreamUri", media1::GetStreamUri},
    {kMedia1, "GetSnapshotUri", media1::GetSnapshotUri},
    {kMedia1, "SetSynchronizationPoint", media1::SetSynchronizationPoint},
    {kMedia2, "GetProfiles", media2::GetProfiles},
    {kMedia2, "GetVideoEncoderConfigurationOptions", media2::GetVideoEncoderConfigurationOptions},
    {kMedia2, "GetAudioEncoderConfigurationOptions", media2::GetAudioEncoderConfigurationOptions},
    {kMedia2, "GetStreamUri", media2::GetStreamUri},
    {kMedia2, "GetSnapshotUri", media2::GetSnapshotUri},
    {kMedia2, "SetSynchronizationPoint", media2::SetSynchronizationPoint},
    {kAnalytics, "GetAnalyticsModules", motion::GetAnalyticsModules},
    {kAnalytics, "GetRules", motion::GetRules},
};

std::string WithPort(const std::string& host, int port) {
  return host.find(':') == std::string::npos ? host + ":" + std::to_string(port) : host;
}

}  // namespace

const OnvifService kOnvifServices[6] = {
    {"tds", "http://www.onvif.org/ver10/device/wsdl", "/onvif/device_service",
     "http://www.onvif.org/ver10/device/wsdl/", [](const OnvifConfig&) { return true; }},
    {"trt", "http://www.onvif.org/ver10/media/wsdl", "/onvif/media_service", "http://www.onvif.org/ver10/media/wsdl/",
     [](const OnvifConfig& onvif) { return onvif.media1; }},
    {"tr2", "http://www.onvif.org/ver20/media/wsdl", "/onvif/media2_service", "http://www.onvif.org/ver20/media/wsdl/",
     [](const OnvifConfig& onvif) { return onvif.media2; }},
    // The action has another spelling than the namespace, as it was published.
    {"tmd", "http://www.onvif.org/ver10/deviceIO/wsdl", "/onvif/deviceio_service",
     "http://www.onvif.org/ver10/deviceio/wsdl/", [](const OnvifConfig& onvif) { return onvif.deviceIo; }},
    {"tan", "http://www.onvif.org/ver20/analytics/wsdl", "/onvif/analytics_service",
     "http://www.onvif.org/ver20/analytics/wsdl/",
     [](const OnvifConfig& onvif) { return onvif.motion == Motion::kAnalytics; }},
    {"tev", "http://www.onvif.org/ver10/events/wsdl", "/onvif/event_service",
     "http://www.onvif.org/ver10/events/wsdl/EventPortType/",
     [](const OnvifConfig& onvif) { return onvif.motion == Motion::kEvents; }}};

OnvifCamera::OnvifCamera(const CameraConfig& cameraConfig, const Entrance& entrance, SyncPoints& points)
    : config(cameraConfig), onvif(*cameraConfig.onvif), syncPoints(points) {
  const std::string host = onvif.innerAddress.empty() ? "127.0.0.1" : onvif.innerAddress;
  const std::string scheme = entrance.overTls ? "https://" : "http://";
  const std::string authority = WithPort(host, entrance.port);
  services = scheme + authority;
  snapshots = scheme + (onvif.snapshotUri == SnapshotUri::kWithLogin ? config.user + ":wrong@" : "") + authority;
  streams = (onvif.tlsStream ? "rtsps://" : "rtsp://") + WithPort(host.substr(0, host.find(':')), entrance.port);
}

std::string OnvifCamera::AddressXml(const std::string& address) const {
  return onvif.badAmpersand ? address : Escape(address);
}

std::string AnswerOnvif(const OnvifCamera& camera, const std::string& path, const std::string& action,
                        const SoapRequest& request) {
  for (const Operation& operation : kOperations) {
    const OnvifService& service = kOnvifServices[operation.service];
    if (request.name != operation.name || request.space != service.space || path != service.path ||
        !service.exists(camera.onvif)) {
      continue;
    }
    const char* end = operation.service == kEvents ? "Request" : "";
    if (!action.empty() && action != service.action + request.name + end) break;
    return Fill("<{prefix}:{name}Response>{content}</{prefix}:{name}Response>",
                {{"prefix", service.prefix}, {"name", request.name}, {"content", operation.answer(camera, request)}});
  }
  throw NotSupported("there is no such action here");
}

}  // namespace simcam
