#pragma once

#include <string>

#include "simcam/config.h"
#include "simcam/http_service.h"
#include "simcam/onvif/soap.h"
#include "simcam/sync_points.h"

namespace simcam {

/// What ONVIF answers are made of. Addresses in it have no path.
struct OnvifCamera {
  OnvifCamera(const CameraConfig& cameraConfig, const Entrance& entrance, SyncPoints& points);

  /// An address as XML, or with its ampersands as they are if that is what is wrong with the camera.
  [[nodiscard]] std::string AddressXml(const std::string& address) const;

  const CameraConfig& config;
  const OnvifConfig& onvif;
  SyncPoints& syncPoints;
  std::string services;   ///< for example "http://127.0.0.1:80"
  std::string snapshots;  ///< the same, for snapshots
  std::string streams;    ///< "rtsp://127.0.0.1:80"
};

/// A namespace and where its requests are answered.
struct OnvifService {
  const char* prefix;  ///< the usual one
  const char* space;
  const char* path;
  const char* action;  ///< of a request, without its name
  bool (*exists)(const OnvifConfig& onvif);
};

/// All services, in the order in which GetServices lists them.
enum OnvifServiceIndex { kDevice, kMedia1, kMedia2, kDeviceIo, kAnalytics, kEvents };
extern const OnvifService kOnvifServices[6];

/// What a request is answered: the content of its response. May throw SoapFault.
using OnvifAnswer = std::string(const OnvifCamera& camera, const SoapRequest& request);

namespace device {
OnvifAnswer GetSystemDateAndTime, GetDeviceInformation, GetServices, GetCapabilities, GetDigitalInputs;
}
namespace media1 {
OnvifAnswer GetProfiles, GetVideoEncoderConfigurationOptions, GetAudioEncoderConfigurationOptions, GetStreamUri,
    GetSnapshotUri, SetSynchronizationPoint;
}
namespace media2 {
OnvifAnswer GetProfiles, GetVideoEncoderConfigurationOptions, GetAudioEncoderConfigurationOptions, GetStreamUri,
    GetSnapshotUri, SetSynchronizationPoint;
}
namespace motion {
OnvifAnswer GetAnalyticsModules, GetRules, GetEventProperties;
}

/// The body of the answer to a request that came to `path` with a SOAP action (empty: none). Throws SoapFault.
std::string AnswerOnvif(const OnvifCamera& camera, const std::string& path, const std::string& action,
                        const SoapRequest& request);

}  // namespace simcam
