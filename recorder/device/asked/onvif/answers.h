#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "recorder/device/asked/onvif/names.h"
#include "recorder/device/asked/xml.h"

// What stands in a camera's answers, each given as the answer's own element. What a camera left out, or what makes no
// sense there, is absent. No camera can make these readers keep more than a few thousand entries.

namespace recorder::onvif {

/// The camera's clock, in UTC; in local time when it tells nothing else.
std::optional<std::chrono::sys_seconds> ReadClock(XmlElement answer);

/// Paths of the services that we ask, "" for those that the camera does not have.
struct ServicePaths {
  std::string media1;
  std::string media2;
  std::string deviceIo;
  std::string events;
  int port = 0;  ///< that the camera names in these addresses, 0 when it does not
};

/// Of GetServices.
ServicePaths ReadServices(XmlElement answer);

/// Of GetCapabilities, which older cameras have instead, and which tells more.
struct Capabilities {
  ServicePaths services;
  std::optional<int> digitalInputs;
  std::optional<unsigned int> rtspProtocols;  ///< bits 1 << RTSP_PROTOCOL
};
Capabilities ReadCapabilities(XmlElement answer);

/// What a camera says of itself, each "" when it does not.
struct DeviceFacts {
  std::string maker;
  std::string model;
  std::string firmware;
  std::string serial;
};

/// Of GetDeviceInformation.
DeviceFacts ReadDeviceFacts(XmlElement answer);

/// The same as one text: maker, model and firmware, as far as they are there.
std::string ReadDevice(XmlElement answer);

/// Of GetAudioEncoderConfigurationOptions, of the media service `media`: true when an encoding is offered.
bool OffersAudio(XmlElement answer, const Service& media);

/// Of GetStreamUri and GetSnapshotUri, of either media service: the address as it stands there, or "".
std::string ReadUri(XmlElement answer);

/// Of GetDigitalInputs: how many there are.
int CountDigitalInputs(XmlElement answer);

}  // namespace recorder::onvif
