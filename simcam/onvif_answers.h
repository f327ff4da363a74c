#pragma once

#include <string>
#include <vector>

#include "simcam/config.h"
#include "simcam/soap.h"

namespace simcam {

/// What ONVIF answers are made of. Addresses in it have no path.
struct OnvifCamera {
  const CameraConfig& config;
  const OnvifConfig& onvif;
  std::string services;   ///< for example "http://127.0.0.1:80"
  std::string snapshots;  ///< the same, for snapshots
  std::string streams;    ///< "rtsp://127.0.0.1:80"

  /// An address as XML, or with its ampersands as they are if that is what is wrong with the camera.
  [[nodiscard]] std::string AddressXml(const std::string& address) const;
};

/// A namespace and where its requests are answered.
struct OnvifService {
  const char* space;
  const char* path;
  const char* action;  ///< of a request, without its name
  bool (*exists)(const OnvifConfig& onvif);
};

extern const OnvifService kDeviceService;
extern const OnvifService kMedia1Service;
extern const OnvifService kMedia2Service;
extern const OnvifService kDeviceIoService;
extern const OnvifService kAnalyticsService;
extern const OnvifService kEventService;

/// A request that is answered: the body of its answer. The function may throw SoapFault.
struct OnvifOperation {
  const OnvifService& service;
  const char* name;
  std::string (*answer)(const OnvifCamera& camera, const SoapRequest& request);
};

const std::vector<OnvifOperation>& DeviceOperations();  ///< device, device IO, events
const std::vector<OnvifOperation>& Media1Operations();
const std::vector<OnvifOperation>& Media2Operations();
const std::vector<OnvifOperation>& AnalyticsOperations();

}  // namespace simcam
