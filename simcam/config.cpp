#include "simcam/config.h"

#include <arpa/inet.h>
#include <json/json.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <set>
#include <utility>

#include "simcam/config_members.h"
#include "simcam/model_file.h"
#include "simcam/service_config.h"

namespace simcam {
namespace {

constexpr Named<Audio> kAudio[] = {{"none", Audio::kNone}, {"first", Audio::kFirst}, {"only", Audio::kOnly}};
constexpr Named<Server> kServers[] = {{"stock", Server::kStock}, {"scripted", Server::kScripted}};
constexpr Named<TlsUse> kTlsUses[] = {{"none", TlsUse::kNone}, {"too", TlsUse::kToo}, {"only", TlsUse::kOnly}};
constexpr Named<bool> kSources[] = {{"live", true}, {"clip", false}};
constexpr Named<bool> kTransports[] = {{"any", false}, {"udp", true}};
constexpr Named<Scheme> kSchemes[] = {{"basic", Scheme::kBasic},
                                      {"digest-md5", Scheme::kDigestMd5},
                                      {"digest-sha256", Scheme::kDigestSha256},
                                      {"digest-unknown", Scheme::kDigestUnknown},
                                      {"bearer", Scheme::kBearer}};

void ReadStart(Members& members, StreamConfig& stream) {
  if (!members.Has("start")) return;
  const Json::Value& start = members.At("start");
  if (start == "random") {
    stream.randomStart = true;
  } else if (start.isNumeric() && start.asDouble() >= 0 && start.asDouble() * stream.fps < stream.gop) {
    stream.secondsBeforeKeyFrame = start.asDouble();
  } else if (start != "key") {
    members.Fail("start must be \"key\", \"random\" or seconds before a key frame, fewer than a GOP lasts");
  }
}

const Codec* ReadCodec(Members& members, const Codec& usual) {
  std::string name = usual.name;
  members.Read("codec", name);
  const Codec* codec = FindCodec(name);
  if (codec == nullptr) members.Fail("unknown codec \"" + name + "\"; --help lists them");
  return codec;
}

bool CanBeLive(const StreamConfig& stream) { return stream.codec->canBeLive && stream.file.empty(); }

/// Live encoding is for small pictures.
bool LiveByDefault(const StreamConfig& stream) {
  return CanBeLive(stream) && stream.size.width * stream.size.height <= 1280 * 720;
}

/// About what cameras of that size are set to: a tenth of a bit for each pixel.
int UsualBitrate(const StreamConfig& stream) {
  return std::max(2000, stream.size.width * stream.size.height / 1000 * stream.fps / 10);
}

StreamConfig ReadStream(const Json::Value& value, const std::string& where) {
  Members members(value, where);
  StreamConfig stream;
  stream.codec = ReadCodec(members, *stream.codec);
  members.Read("width", stream.size.width, 16, 7680);
  members.Read("height", stream.size.height, 16, 4320);
  members.Read("fps", stream.fps, 1, 60);
  members.Read("gop", stream.gop, 1, 1500);
  stream.bitrate = UsualBitrate(stream);
  members.Read("bitrate", stream.bitrate, 50, 100000);
  members.Read("slices", stream.slices, 1, 16);
  members.Read("depth", stream.depth, 8, 10);
  members.Read("path", stream.path);
  members.Read("anyPath", stream.isAnyPath);
  members.Read("audio", stream.audio, kAudio);
  members.Read("file", stream.file);
  if (!stream.file.empty() && !std::ifstream(stream.file)) members.Fail("cannot read " + stream.file);
  stream.live = LiveByDefault(stream);
  members.Read("source", stream.live, kSources);
  members.Read("pli", stream.honoursPli);
  members.Read("transport", stream.isUdpAlone, kTransports);
  members.Read("fir", stream.honoursFir);
  members.Read("sync", stream.honoursSync);
  ReadStart(members, stream);
  members.Finish();
  CheckPath(members, stream.path);
  if (stream.live && !CanBeLive(stream)) members.Fail("this codec, or a file, has no live source, only a clip");
  if (stream.size.width % 2 != 0 || stream.size.height % 2 != 0) members.Fail("width and height must be even");
  const int most = stream.codec->mostRtpPixels;
  if (most > 0 && std::max(stream.size.width, stream.size.height) > most) {
    members.Fail(std::string(stream.codec->name) + " over RTP ends at " + std::to_string(most) + " pixels");
  }
  return stream;
}

std::vector<StreamConfig> ReadStreams(const Json::Value& value, const std::string& where) {
  if (!value.isArray()) return {ReadStream(value, where)};
  std::vector<StreamConfig> streams;
  for (const Json::Value& item : value) streams.push_back(ReadStream(item, where));
  if (streams.empty()) throw ConfigError(where + ": must not be empty");
  return streams;
}

LoginConfig ReadLogin(const Json::Value& value, const std::string& where) {
  if (value == "none") return {};
  Json::Value object = value;
  if (value.isString()) {
    object = Json::Value(Json::objectValue);
    object["offer"].append(value);
  }
  Members members(object, where);
  LoginConfig login;
  members.Read("oneHeader", login.oneHeader);
  members.Read("qop", login.qop);
  members.Read("semicolons", login.semicolons);
  members.Read("slowRefusal", login.slowRefusal);
  if (!members.Has("offer") || !members.At("offer").isArray()) members.Fail("offer must be a list of login methods");
  for (const Json::Value& scheme : members.At("offer")) {
    login.offer.push_back(members.Choose("offer", scheme.isString() ? scheme.asString() : "", kSchemes));
  }
  members.Finish();
  return login;
}

Size ReadSize(const Members& members, const Json::Value& value) {
  Size size;
  char rest = 0;
  const std::string text = value.isString() ? value.asString() : "";
  if (std::sscanf(text.c_str(), "%5dx%5d%c", &size.width, &size.height, &rest) != 2 ||  // NOLINT(cert-err34-c)
      size.width < 16 || size.height < 16) {
    members.Fail("a size must be a text such as 1280x720");
  }
  return size;
}

void ReadSnapshot(const Json::Value& value, const std::string& where, CameraConfig& camera) {
  Members members(value, where);
  members.Read("path", camera.snapshotPath);
  if (members.Has("sizes")) {
    for (const Json::Value& size : members.At("sizes")) camera.snapshotSizes.push_back(ReadSize(members, size));
  }
  members.Finish();
  CheckPath(members, camera.snapshotPath);
}

PageConfig ReadPage(const Json::Value& value, const std::string& where) {
  Members members(value, where);
  PageConfig page;
  members.Read("path", page.path);
  members.Read("status", page.status, 100, 599);
  members.Read("type", page.type);
  members.Read("body", page.body);
  members.Read("login", page.login);
  members.Finish();
  CheckPath(members, page.path);
  return page;
}

void ReadFault(Members& members, CameraConfig& camera) {
  std::string name = "none";
  members.Read("fault", name);
  const auto fault = FaultFromName(name);
  if (!fault) members.Fail("unknown fault \"" + name + "\"; --help lists them");
  camera.fault = *fault;
  members.Read("redirectTo", camera.redirectTo);
  const bool isRedirecting = fault->fault == Fault::kRedirectOther || fault->fault == Fault::kRedirectRtsp;
  if (isRedirecting && camera.redirectTo.empty()) members.Fail("redirectTo is missing");
}

bool NeedsScript(const StreamConfig& stream) {
  const bool sendsKeyFramesWhenAsked = stream.honoursPli || stream.honoursFir || stream.honoursSync;
  return stream.isAnyPath || stream.randomStart || stream.secondsBeforeKeyFrame > 0 || sendsKeyFramesWhenAsked ||
         stream.path.find('?') != std::string::npos || !stream.file.empty();
}

/// What a fault that is about slices needs.
int FewestSlices(Fault fault) {
  if (fault == Fault::kMarkerOnEveryUnit || fault == Fault::kTimestampPerSlice) return 4;
  return fault == Fault::kParameterSetsBetweenSlices ? 2 : 1;
}

/// GStreamer's server plays what is healthy, the scripted one whatever that cannot do.
void ChooseServer(Members& members, CameraConfig& camera) {
  bool script = members.Has("model") || !OnlyHttp(camera.fault) || camera.tls != TlsUse::kNone;
  script |= !camera.serverName.empty();
  for (const StreamConfig& stream : camera.streams) script |= NeedsScript(stream);
  camera.server = script ? Server::kScripted : Server::kStock;
  members.Read("server", camera.server, kServers);
  if (script && camera.server == Server::kStock) members.Fail("this camera needs the scripted server");
  for (StreamConfig& stream : camera.streams) {
    if (camera.server != Server::kScripted) continue;
    if (stream.audio != Audio::kNone) members.Fail("the scripted server has no audio");
    stream.live = false;
    stream.slices = std::max(stream.slices, FewestSlices(camera.fault.fault));
  }
}

void CheckStreamPaths(const Members& members, const CameraConfig& camera) {
  std::set<std::string> paths;
  for (const StreamConfig& stream : camera.RtspStreams()) {
    if (!paths.insert(stream.path).second) members.Fail("two streams have the path " + stream.path);
  }
}

/// What a camera shows, unless a model file says so.
void ReadVideo(Members& members, CameraConfig& camera) {
  const std::string& where = members.Where();
  const Json::Value usualStream(Json::objectValue);
  camera.streams = ReadStreams(members.Has("stream") ? members.At("stream") : usualStream, where + ".stream");
  if (members.Has("snapshot")) ReadSnapshot(members.At("snapshot"), where + ".snapshot", camera);
  if (members.Has("mjpeg")) {
    Members mjpeg(members.At("mjpeg"), where + ".mjpeg");
    mjpeg.Read("path", camera.mjpegPath);
    mjpeg.Finish();
    CheckPath(mjpeg, camera.mjpegPath);
  }
  if (members.Has("onvif")) ReadOnvif(members.At("onvif"), where + ".onvif", camera);
}

void ReadAddress(Members& members, CameraConfig& camera) {
  members.Read("address", camera.address);
  in_addr address{};
  const bool isAddress = inet_pton(AF_INET, camera.address.c_str(), &address) == 1;
  if (!isAddress || ntohl(address.s_addr) >> 24U != IN_LOOPBACKNET) members.Fail("address must be in 127.0.0.0/8");
  members.Read("port", camera.port, 0, 65535);
}

CameraConfig ReadCamera(const Json::Value& value, const std::string& where) {
  Members members(value, where);
  CameraConfig camera;
  members.Read("name", camera.name);
  ReadAddress(members, camera);
  members.Read("user", camera.user);
  members.Read("password", camera.password);
  members.Read("serverName", camera.serverName);
  members.Read("realm", camera.realm);
  if (members.Has("login")) camera.login = ReadLogin(members.At("login"), where + ".login");
  if (members.Has("model")) {
    ReadModel(members.At("model"), where + ".model", camera);
  } else {
    ReadVideo(members, camera);
  }
  if (members.Has("pages")) {
    for (const Json::Value& page : members.At("pages")) camera.pages.push_back(ReadPage(page, where + ".pages"));
  }
  members.Read("tls", camera.tls, kTlsUses);
  ReadFault(members, camera);
  ChooseServer(members, camera);
  if (members.Has("psia")) ReadPsia(members.At("psia"), where + ".psia", camera);
  members.Read("discovery", camera.discovery);
  members.Read("mdns", camera.mdns);
  members.Finish();
  CheckStreamPaths(members, camera);
  if (camera.discovery && !camera.onvif) members.Fail("discovery tells of an ONVIF service; onvif is missing");
  if (camera.name.empty()) members.Fail("name is missing");
  return camera;
}

}  // namespace

std::vector<StreamConfig> CameraConfig::RtspStreams() const {
  std::vector<StreamConfig> all = streams;
  if (!psia) return all;
  for (const PsiaChannel& channel : psia->channels) {
    if (channel.enabled) all.push_back(channel.stream);
  }
  return all;
}

std::vector<CameraConfig> ReadConfig(const std::string& path) {
  const Json::Value root = ReadJson(path);
  Members members(root, path);
  if (!members.Has("cameras") || !root["cameras"].isArray()) members.Fail("cameras must be a list");
  members.Finish();
  std::vector<CameraConfig> cameras;
  std::set<std::string> names;
  for (const Json::Value& value : root["cameras"]) {
    cameras.push_back(ReadCamera(value, "cameras[" + std::to_string(cameras.size()) + "]"));
    if (!names.insert(cameras.back().name).second) members.Fail("two cameras are named " + cameras.back().name);
  }
  return cameras;
}

}  // namespace simcam
