#pragma once

#include <optional>
#include <string>
#include <vector>

#include "recorder/device/asked/onvif/answers.h"
#include "recorder/device/asked/onvif/profiles.h"
#include "recorder/device/asked/onvif/soap.h"
#include "recorder/device/model/model.h"
#include "recorder/utility/outcome.h"

// The questions that lead to a camera's streams, whoever asks them.

namespace recorder::onvif {

/// A media service of a camera.
struct MediaService {
  const Service* service = nullptr;
  std::string path;
  bool IsMedia2() const { return service == &kMedia2; }
};

/// Which services are there? Older cameras tell their capabilities instead, which then are kept. kNoVideo: no media
/// service.
Outcome AskServices(SoapClient& client, ServicePaths& services, std::optional<Capabilities>& capabilities);

/// GetCapabilities, which are kept.
Reply AskCapabilities(SoapClient& client, std::optional<Capabilities>& capabilities);

/// The profiles, of the media service that has them. kNoVideo: none with an encoder.
Outcome AskProfiles(SoapClient& client, const ServicePaths& services, MediaService& media,
                    std::vector<Profile>& profiles);

/// Asks for something of a profile; `arguments` come before its token.
Reply AskMedia(SoapClient& client, const MediaService& media, const std::string& name, const std::string& arguments,
               const std::string& profile);

/// Asks where the stream of a profile is to be had over RTSP.
Reply AskStream(SoapClient& client, const MediaService& media, const std::string& profile);

/// What was answered to that; with kOk the port is there. kNoVideo: the stream is to be had nowhere.
Outcome ReadStream(const Reply& reply, ModelPath& stream);

}  // namespace recorder::onvif
