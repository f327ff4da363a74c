#include "recorder/device/asked/onvif/stream_questions.h"

#include <algorithm>

#include "recorder/net/camera_url.h"

namespace recorder::onvif {
namespace {

bool HasMedia(const ServicePaths& services) { return !services.media1.empty() || !services.media2.empty(); }

/// True for a failure after which the camera's other media service may still answer.
bool IsAboutOneService(Outcome outcome) {
  return outcome == Outcome::kNoVideo || outcome == Outcome::kNotUnderstood || outcome == Outcome::kNoSuchStream ||
         outcome == Outcome::kNotThisProtocol;
}

Outcome AskProfilesOf(SoapClient& client, const MediaService& media, std::vector<Profile>& profiles) {
  const Reply reply =
      client.Call(media.path, *media.service, "GetProfiles", media.IsMedia2() ? Element("Type", "All") : "");
  if (reply.outcome != Outcome::kOk) return reply.outcome;
  profiles = ReadProfiles(reply.content, *media.service);
  const bool hasVideo =
      std::any_of(profiles.begin(), profiles.end(), [](const Profile& profile) { return profile.encoder.has_value(); });
  return hasVideo ? Outcome::kOk : Outcome::kNoVideo;
}

}  // namespace

Outcome AskServices(SoapClient& client, ServicePaths& services, std::optional<Capabilities>& capabilities) {
  const Reply reply = client.Call(kDevicePath, kDevice, "GetServices", Element("IncludeCapability", "false"));
  if (reply.isLast || reply.outcome == Outcome::kBusy) return reply.outcome;
  services = ReadServices(reply.content);
  if (HasMedia(services)) return Outcome::kOk;

  const Reply older = AskCapabilities(client, capabilities);
  if (older.outcome != Outcome::kOk) return older.outcome;
  services = capabilities->services;
  return HasMedia(services) ? Outcome::kOk : Outcome::kNoVideo;
}

Reply AskCapabilities(SoapClient& client, std::optional<Capabilities>& capabilities) {
  Reply reply = client.Call(kDevicePath, kDevice, "GetCapabilities", Element("Category", "All"));
  capabilities = ReadCapabilities(reply.content);
  return reply;
}

/// Media 2 knows more codecs, but not every camera that names it has it.
Outcome AskProfiles(SoapClient& client, const ServicePaths& services, MediaService& media,
                    std::vector<Profile>& profiles) {
  Outcome outcome = Outcome::kNoVideo;
  if (!services.media2.empty()) {
    media = {&kMedia2, services.media2};
    outcome = AskProfilesOf(client, media, profiles);
  }
  if (services.media1.empty() || !IsAboutOneService(outcome)) return outcome;
  media = {&kMedia1, services.media1};
  return AskProfilesOf(client, media, profiles);
}

Reply AskMedia(SoapClient& client, const MediaService& media, const std::string& name, const std::string& arguments,
               const std::string& profile) {
  return client.Call(media.path, *media.service, name, arguments + Element("ProfileToken", profile));
}

Reply AskStream(SoapClient& client, const MediaService& media, const std::string& profile) {
  constexpr char kRtspUnicast[] =
      R"(<StreamSetup><Stream xmlns="http://www.onvif.org/ver10/schema">RTP-Unicast</Stream>)"
      R"(<Transport xmlns="http://www.onvif.org/ver10/schema"><Protocol>RTSP</Protocol></Transport></StreamSetup>)";
  return AskMedia(client, media, "GetStreamUri", media.IsMedia2() ? Element("Protocol", "RTSP") : kRtspUnicast,
                  profile);
}

Outcome ReadStream(const Reply& reply, ModelPath& stream) {
  if (reply.isFault && !reply.isLoginWanted) return Outcome::kNoVideo;
  if (reply.outcome != Outcome::kOk) return reply.outcome;
  const auto url = ParseCameraUrl(ReadUri(reply.content));
  const bool isTls = url && url->scheme == "rtsps";
  if (!url || (!isTls && url->scheme != "rtsp")) return Outcome::kNoVideo;
  stream = {url->path, url->port, isTls};
  return Outcome::kOk;
}

}  // namespace recorder::onvif
