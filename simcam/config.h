#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "simcam/codecs.h"
#include "simcam/fault.h"

namespace simcam {

enum class Audio { kNone, kFirst, kOnly };
enum class TlsUse { kNone, kToo, kOnly };
enum class Server { kStock, kScripted };
enum class Scheme { kBasic, kDigestMd5, kDigestSha256, kDigestUnknown, kBearer };
enum class OnvifLogin { kHttp, kToken, kEither };
enum class Prefixes { kUsual, kStrange, kOfService, kUndeclared };
enum class SnapshotUri { kHttp, kRtsp, kNone, kWithLogin };
enum class Motion { kAnalytics, kEvents, kNone };

/// What is wrong with the answers of a camera's ONVIF or PSIA service.
enum class Trouble {
  kNone,
  kEndless,
  kHuge,
  kEntities,
  kAmpersands,
  kElements,
  kBrokenXml,
  kHtmlPage,
  kNoService,
  kSlow,
  kRedirectTls,
};

struct Size {
  int width = 640;
  int height = 480;

  bool operator==(const Size&) const = default;
};

struct StreamConfig {
  const Codec* codec = FindCodec("h264");
  Size size;
  int fps = 25;
  int gop = 25;     ///< pictures from one key frame to the next
  int bitrate = 0;  ///< kbit/s; not for JPEG
  int depth = 8;    ///< bits of a sample, 8 or 10; H.264 and H.265
  int slices = 1;   ///< of a picture; H.264 and H.265
  std::string path = "/stream1";
  bool isAnyPath = false;  ///< what is asked for at a path that no stream has is this one
  Audio audio = Audio::kNone;
  std::string file;                  ///< a clip encoded elsewhere, as an elementary stream; empty: encoded here
  bool live = true;                  ///< encoded while somebody watches; else a clip, encoded beforehand and looped
  bool randomStart = false;          ///< a session starts anywhere in the clip
  double secondsBeforeKeyFrame = 0;  ///< a session starts so long before a key frame
  bool isUdpAlone = false;           ///< 461 to a SETUP over TCP
  // What brings a key frame at once:
  bool honoursPli = false;   ///< a picture loss indication (RFC 4585)
  bool honoursFir = false;   ///< a full intra request with another number than the last (RFC 5104)
  bool honoursSync = false;  ///< ONVIF's SetSynchronizationPoint
};

struct LoginConfig {
  std::vector<Scheme> offer;  ///< empty: no login wanted
  bool oneHeader = false;     ///< all challenges in one WWW-Authenticate line, by commas
  bool qop = true;            ///< false: Digest without qop, as old cameras do (RFC 2069)
  bool semicolons = false;    ///< between the parameters of Digest, instead of commas
  bool slowRefusal = false;   ///< a wrong login is counted at once, and refused half a second later
};

/// A fixed HTTP answer, for example of a device service.
struct PageConfig {
  std::string path;
  int status = 200;
  std::string type = "text/plain";
  std::string body;
  bool login = true;
};

/// Pictures over HTTP at exactly this path: one, or a motion JPEG stream of them.
struct PicturesConfig {
  std::string path;
  bool isMotion = false;
};

/// ONVIF services. The streams are dealt to the channels in their order, to each as many; a profile is a stream.
struct OnvifConfig {
  bool media1 = true;
  bool media2 = true;
  OnvifLogin login = OnvifLogin::kHttp;
  bool hasOwnUsers = false;  ///< and the camera's is none of them
  int clockHours = 0;        ///< how much the camera's clock is fast
  int faultStatus = 400;     ///< the HTTP status of "not authorized" where the login is a token
  Prefixes prefixes = Prefixes::kUsual;
  bool badAmpersand = false;  ///< addresses with a query, its ampersand not escaped
  std::string innerAddress;   ///< what answers name instead of 127.0.0.1; with a port, that of the services
  SnapshotUri snapshotUri = SnapshotUri::kHttp;
  bool tlsStream = false;  ///< streams are named with rtsps
  bool services = true;    ///< knows GetServices
  bool deviceIo = true;
  int inputs = 1;  ///< digital inputs
  bool audio = true;
  Motion motion = Motion::kAnalytics;
  int channels = 1;  ///< video sources
  Trouble trouble = Trouble::kNone;
};

struct PsiaChannel {
  std::string id;
  bool enabled;
  StreamConfig stream;  ///< behind it, at PSIA's path
};

constexpr const char* kPsiaChannelsPath = "/PSIA/Streaming/channels";

/// The PSIA service, version 1.0.
struct PsiaConfig {
  std::vector<PsiaChannel> channels;
  int inputs = 1;  ///< digital inputs
  bool motion = true;
  bool picture = true;
  Trouble trouble = Trouble::kNone;
};

struct CameraConfig {
  std::string name;
  std::string address = "127.0.0.1";  ///< or another one of 127.0.0.0/8
  int port = 0;
  std::string user = "admin";
  std::string password;
  LoginConfig login;
  std::string serverName;  ///< by which it answers, RTSP and HTTP; empty: none
  std::string realm = "simulated camera";
  std::vector<StreamConfig> streams;  ///< none: a model without RTSP
  Server server = Server::kStock;
  std::string snapshotPath = "/snapshot.jpg";  ///< empty, as mjpegPath: none but those of `pictures`
  std::vector<Size> snapshotSizes;             ///< what ?size=WxH may ask for besides the first stream's size
  std::string mjpegPath = "/video.mjpg";
  std::vector<PicturesConfig> pictures;  ///< of a model
  std::vector<PageConfig> pages;
  std::optional<OnvifConfig> onvif;
  std::optional<PsiaConfig> psia;
  TlsUse tls = TlsUse::kNone;  ///< whether the port speaks TLS, too or only
  bool discovery = false;      ///< answers WS-Discovery probes
  bool mdns = false;           ///< answers multicast DNS
  FaultConfig fault;
  std::string redirectTo;

  /// The streams and those of the enabled PSIA channels.
  [[nodiscard]] std::vector<StreamConfig> RtspStreams() const;
  /// Size and rate of pictures over HTTP: those of the first stream.
  [[nodiscard]] StreamConfig PictureStream() const { return streams.empty() ? StreamConfig() : streams.front(); }
};

/// A mistake in the configuration, in words for its author.
struct ConfigError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Reads the configuration file. Throws ConfigError. README.md shows the format.
std::vector<CameraConfig> ReadConfig(const std::string& path);

}  // namespace simcam
