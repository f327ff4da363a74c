#pragma once

#include <string>
#include <vector>

#include "simcam/onvif/operations.h"

namespace simcam {

/// A stream as a media profile. Its tokens end in its number, those of its source in the number of its channel.
struct OnvifProfile {
  const StreamConfig* stream;
  int number;   ///< from 1
  int channel;  ///< from 1
};

/// How many streams each channel has.
int StreamsEach(const OnvifCamera& camera);

/// The camera's profiles that a media service can tell of: media 1 knows no H.265.
std::vector<OnvifProfile> ProfilesOf(const OnvifCamera& camera, OnvifServiceIndex media);

/// The profile that a request's ProfileToken names; throws SoapFault.
OnvifProfile ProfileNamed(const OnvifCamera& camera, const SoapRequest& request);

/// The profiles of the channel of which a request names a profile or an encoder; all if it names none. Throws
/// SoapFault.
std::vector<OnvifProfile> ProfilesAskedFor(const OnvifCamera& camera, const SoapRequest& request,
                                           OnvifServiceIndex media);

/// Name and UseCount, with which every configuration begins.
std::string EntityXml(const std::string& name, int useCount);

/// The content of configurations that both media services write alike.
std::string VideoSourceXml(const OnvifCamera& camera, const OnvifProfile& profile);
std::string AudioSourceXml(const OnvifCamera& camera, const OnvifProfile& profile);
std::string AnalyticsXml(const OnvifCamera& camera);

/// Where the stream and the snapshot of a profile are. SnapshotAddressXml throws SoapFault if there are none.
std::string StreamAddressXml(const OnvifCamera& camera, const OnvifProfile& profile);
std::string SnapshotAddressXml(const OnvifCamera& camera, const OnvifProfile& profile);

/// Asks for a key frame of the stream of the profile that a request names, and answers with nothing, as both media
/// services do; throws SoapFault.
std::string Synchronize(const OnvifCamera& camera, const SoapRequest& request);

std::string ResolutionXml(const char* element, Size size);
/// The sizes that these profiles have in one codec, each once.
std::string ResolutionsXml(const std::vector<OnvifProfile>& profiles, const Codec& codec);
/// The fastest of these profiles in one codec, in pictures a second; 0 if there is none.
int FastestOf(const std::vector<OnvifProfile>& profiles, const Codec& codec);

std::string RangeXml(const char* element, int least, int most);

/// What every encoder can be set to.
constexpr int kLeastQuality = 1;
constexpr int kMostQuality = 5;
constexpr int kUsualQuality = 4;
constexpr int kMostGop = 1000;

}  // namespace simcam
