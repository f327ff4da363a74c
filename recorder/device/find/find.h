#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "recorder/utility/outcome.h"

// From an address to its streams: what answers there, who made it, and which streams it says it has.

namespace recorder {

inline constexpr int kMostFindRequests = 20;
inline constexpr std::chrono::seconds kLongestFind{10};
inline constexpr std::size_t kMostFindPorts = 12;

/// Where to look, and with which login.
struct FindRequest {
  std::string host;
  std::string user;        ///< "" and no password: nothing is logged in with
  std::string password;    ///< itself, and no token of a lent one
  std::vector<int> ports;  ///< at most kMostFindPorts; none: the usual ones of cameras
};

/// What says so over ONVIF, for people.
inline constexpr char kOnvifSays[] = "ONVIF";

/// Something that is known of a camera, and who said so.
struct Fact {
  std::string value;  ///< "": not known
  std::string from;   ///< for people: "ONVIF", "RTSP server", "web server", "model file: VENDOR MODEL"
};

/// A port that answered, and what speaks there.
struct FoundPort {
  int number = 0;
  bool speaksRtsp = false;
  bool speaksHttp = false;
  bool isTls = false;  ///< what speaks there does so inside TLS
  bool speaksOnvif = false;
  std::string server;  ///< name of the software, as it says; UTF-8 without control characters, like the realm
  std::string realm;   ///< of the login that it asks for
};

/// How the one login ended.
enum class FindLogin {
  kNotTried,   ///< none was given, or nothing that asks for one answered
  kNotNeeded,  ///< one was given, and nothing asked for it
  kAccepted,
  kRefused,      ///< or answered by nothing that is clearly a yes
  kOnvifOthers,  ///< RTSP took it, ONVIF did not: it has users of its own
};

/// A stream that the camera has, or should have.
struct ListedStream {
  bool isOverHttp = false;  ///< else RTSP
  int port = 0;
  bool isTls = false;
  std::string path;     ///< with its query
  std::string channel;  ///< from "1"
  std::string name;     ///< "main", "sub", "third", or "": not known
  std::string codec;    ///< the recorder's name for it, "H.264"; "": not known
  int width = 0;        ///< pixels, as the camera claims; 0: it does not say
  int height = 0;
  int frameRate = 0;            ///< pictures a second, likewise
  std::string profile;          ///< ONVIF's token, or ""
  std::string from;             ///< as Fact has it
  bool isAsked = false;         ///< the camera said that it has it; else it was worked out from how others are named
  bool isShownByOnvif = false;  ///< it is the one that a camera stored as one of ONVIF is asked for
  bool operator==(const ListedStream&) const = default;
};

/// Where a still picture comes from over HTTP.
struct ListedSnapshot {
  std::string path;  ///< with its query
  int port = 0;
  bool isTls = false;
  std::string from;  ///< as Fact has it
};

/// What is to be told to the user beside the list.
enum class FindWarning {
  kAnyPath,     ///< the camera says yes to every path: which are real is not sure
  kClockWrong,  ///< see clockOffset
  kOnvifOthers,
  kEnded,  ///< requests or time were spent before all was asked
};

/// What is known of `host` in the end.
struct FindResult {
  Outcome outcome = Outcome::kUnreachable;  ///< kOk: there is a stream; else why there is none
  std::vector<FoundPort> ports;             ///< those that answered, ascending
  FindLogin login = FindLogin::kNotTried;
  Fact maker;
  Fact model;
  Fact firmware;
  Fact serial;
  std::vector<ListedStream> streams;  ///< by channel, main before sub
  std::optional<ListedSnapshot> snapshot;
  std::optional<std::chrono::seconds> clockOffset;  ///< the camera's clock less ours; nothing: it does not tell
  std::string
      modelVendor;  ///< of the model file by whose paths the streams were found; "": by none whose maker is named
  std::string modelName;
  bool isPortOfModel = false;  ///< that model names the stream's port by itself
  int onvifPort = 0;           ///< where ONVIF named the streams; 0: nowhere
  std::vector<FindWarning> warnings;
  int requests = 0;  ///< that were sent, those included that were answered by a challenge
  std::chrono::milliseconds duration{0};
};

/// Something has ended.
enum class FindStep { kPorts, kLogin, kOnvif, kPaths };

/// Told as things end, with what is known by then. False: find no more, which ends with what there is.
using OnFindStep = std::function<bool(FindStep step, const FindResult& soFar)>;

/// Finds the streams of a camera, of which an address is known and perhaps a login: usual ports side by side, names of
/// servers, ONVIF's questions that need no login, the proof of the login, ONVIF's profiles, and only where ONVIF is
/// silent the paths that model files know.
///
/// Contacts nobody but the host, through net/. At most kMostFindRequests requests and kLongestFind, and no longer than
/// the thread's RequestScope allows. A wrong login is one refused attempt in all, over RTSP where that asks for one:
/// what is not clearly a yes counts as a refusal. What took it at one port may refuse it at another, once. Logs nothing
/// of the login. Any thread.
FindResult Find(const FindRequest& request, const OnFindStep& onStep);

}  // namespace recorder
