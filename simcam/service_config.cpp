#include "simcam/service_config.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include "simcam/config_members.h"

namespace simcam {
namespace {

constexpr Named<OnvifLogin> kLogins[] = {
    {"http", OnvifLogin::kHttp}, {"token", OnvifLogin::kToken}, {"either", OnvifLogin::kEither}};
constexpr Named<Prefixes> kPrefixes[] = {{"usual", Prefixes::kUsual},
                                         {"strange", Prefixes::kStrange},
                                         {"ofService", Prefixes::kOfService},
                                         {"undeclared", Prefixes::kUndeclared}};
constexpr Named<SnapshotUri> kSnapshotUris[] = {{"http", SnapshotUri::kHttp},
                                                {"rtsp", SnapshotUri::kRtsp},
                                                {"none", SnapshotUri::kNone},
                                                {"withLogin", SnapshotUri::kWithLogin}};
constexpr Named<Motion> kMotions[] = {
    {"analytics", Motion::kAnalytics}, {"events", Motion::kEvents}, {"none", Motion::kNone}};
constexpr Named<Trouble> kTroubles[] = {{"ampersands", Trouble::kAmpersands},
                                        {"elements", Trouble::kElements},
                                        {"none", Trouble::kNone},
                                        {"endless", Trouble::kEndless},
                                        {"huge", Trouble::kHuge},
                                        {"entities", Trouble::kEntities},
                                        {"brokenXml", Trouble::kBrokenXml},
                                        {"htmlPage", Trouble::kHtmlPage},
                                        {"noService", Trouble::kNoService},
                                        {"slow", Trouble::kSlow},
                                        {"redirectTls", Trouble::kRedirectTls}};

std::vector<std::string> ReadTexts(Members& members, const char* key, std::vector<std::string> usual) {
  if (!members.Has(key)) return usual;
  if (!members.At(key).isArray()) members.Fail(std::string(key) + " must be a list");
  std::vector<std::string> texts;
  for (const Json::Value& item : members.At(key)) {
    if (!item.isString()) members.Fail(std::string(key) + " must be a list of texts");
    texts.push_back(item.asString());
    if (std::count(texts.begin(), texts.end(), texts.back()) > 1) {
      members.Fail(std::string(key) + " names \"" + texts.back() + "\" twice");
    }
  }
  return texts;
}

void ReadMedia(Members& members, OnvifConfig& onvif) {
  const auto versions = ReadTexts(members, "media", {"1", "2"});
  if (versions.empty()) members.Fail("media must not be empty");
  onvif.media1 = onvif.media2 = false;
  for (const std::string& version : versions) {
    if (version != "1" && version != "2") members.Fail("media \"" + version + "\" is none of 1, 2");
    (version == "1" ? onvif.media1 : onvif.media2) = true;
  }
}

void ReadFaultStatus(Members& members, OnvifConfig& onvif) {
  members.Read("faultStatus", onvif.faultStatus, 400, 500);
  if (onvif.faultStatus != 400 && onvif.faultStatus != 401 && onvif.faultStatus != 500) {
    members.Fail("faultStatus must be 400, 401 or 500");
  }
}

/// A query of which every part but the first follows an ampersand, for addresses that are to be written badly.
void AddQueries(CameraConfig& camera) {
  const auto add = [](std::string& path, size_t channel, size_t subtype) {
    if (path.find('?') != std::string::npos) return;
    path += "?channel=" + std::to_string(channel + 1) + "&subtype=" + std::to_string(subtype);
  };
  const size_t streamsEach = camera.streams.size() / static_cast<size_t>(camera.onvif->channels);
  for (size_t i = 0; i < camera.streams.size(); ++i) add(camera.streams[i].path, i / streamsEach, i % streamsEach);
  add(camera.snapshotPath, 0, 0);
}

bool IsChannelId(const std::string& id) {
  return !id.empty() && std::all_of(id.begin(), id.end(), [](unsigned char c) { return std::isalnum(c) != 0; });
}

}  // namespace

void ReadOnvif(const Json::Value& value, const std::string& where, CameraConfig& camera) {
  Members members(value, where);
  OnvifConfig& onvif = camera.onvif.emplace();
  ReadMedia(members, onvif);
  members.Read("login", onvif.login, kLogins);
  members.Read("ownUsers", onvif.hasOwnUsers);
  members.Read("clockHours", onvif.clockHours, -48, 48);
  ReadFaultStatus(members, onvif);
  members.Read("prefixes", onvif.prefixes, kPrefixes);
  members.Read("badAmpersand", onvif.badAmpersand);
  members.Read("innerAddress", onvif.innerAddress);
  members.Read("snapshotUri", onvif.snapshotUri, kSnapshotUris);
  members.Read("tlsStream", onvif.tlsStream);
  members.Read("services", onvif.services);
  members.Read("deviceIo", onvif.deviceIo);
  members.Read("inputs", onvif.inputs, 0, 16);
  members.Read("audio", onvif.audio);
  members.Read("motion", onvif.motion, kMotions);
  members.Read("channels", onvif.channels, 1, 64);
  members.Read("trouble", onvif.trouble, kTroubles);
  members.Finish();
  if (camera.streams.size() % static_cast<size_t>(onvif.channels) != 0) {
    members.Fail("each of the " + std::to_string(onvif.channels) + " channels needs as many streams, but there are " +
                 std::to_string(camera.streams.size()) + " in all");
  }
  if (onvif.badAmpersand) AddQueries(camera);
}

void ReadPsia(const Json::Value& value, const std::string& where, CameraConfig& camera) {
  Members members(value, where);
  PsiaConfig& psia = camera.psia.emplace();
  const auto ids = ReadTexts(members, "channels", {"101", "102"});
  const auto disabled = ReadTexts(members, "disabled", {});
  members.Read("inputs", psia.inputs, 0, 16);
  members.Read("motion", psia.motion);
  members.Read("picture", psia.picture);
  members.Read("trouble", psia.trouble, kTroubles);
  members.Finish();
  if (ids.empty()) members.Fail("channels must not be empty");
  for (const std::string& id : disabled) {
    if (std::find(ids.begin(), ids.end(), id) == ids.end()) members.Fail("disabled: no channel \"" + id + "\"");
  }
  const std::vector<StreamConfig>& streams = camera.streams;
  if (streams.size() != 1 && streams.size() != ids.size()) {
    members.Fail("needs one stream, or one for each of its " + std::to_string(ids.size()) + " channels");
  }
  for (size_t i = 0; i < ids.size(); ++i) {
    if (!IsChannelId(ids[i])) members.Fail("channel \"" + ids[i] + "\" must be letters and digits");
    const bool enabled = std::find(disabled.begin(), disabled.end(), ids[i]) == disabled.end();
    PsiaChannel& channel =
        psia.channels.emplace_back(PsiaChannel{ids[i], enabled, streams[streams.size() == 1 ? 0 : i]});
    const Codec& codec = *channel.stream.codec;
    if (codec.psia == nullptr) members.Fail(std::string("PSIA knows no ") + codec.name);
    channel.stream.path = kPsiaChannelsPath + ("/" + ids[i]);
  }
}

}  // namespace simcam
