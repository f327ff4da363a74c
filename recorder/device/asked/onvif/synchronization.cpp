#include "recorder/device/asked/onvif/synchronization.h"

#include "recorder/device/asked/onvif/names.h"
#include "recorder/device/asked/onvif/soap.h"
#include "recorder/device/asked/xml.h"
#include "recorder/utility/log.h"

namespace recorder::onvif {

Outcome SetSynchronizationPoint(const CameraAddress& camera, const OnvifMedia& media, const std::string& profile,
                                Clock::time_point end) {
  SoapClient client(camera);
  client.EndBy(end);
  const Reply reply = client.Call(media.path, media.isMedia2 ? kMedia2 : kMedia1, "SetSynchronizationPoint",
                                  Element("ProfileToken", profile));
  if (reply.outcome != Outcome::kOk) {
    LogFailure("The camera at " + PlaceOf(camera) +
               " gives no key frame over ONVIF: " + std::string(Describe(reply.outcome)) + ".");
  }
  return reply.outcome;
}

}  // namespace recorder::onvif
