#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/utility.h"
#include "recorder/utility/login_method.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// One stored camera. Its password is not part of the record, so that a list of cameras is no list of passwords.
struct CameraRecord {
  int id = 0;  ///< given by Records::Add, never given again after a Remove
  std::string name;
  std::string vendor;
  std::string model;  ///< "" for vendor "User"
  std::string host;
  int port = 0;
  std::string user;
  std::string channel;     ///< "": any
  std::string sourcePath;  ///< for a model whose stream path the user gives
  CAM_CONN_STATUS status = CAM_CONN_STATUS_NORMAL;
  int ownerKdId = kLocalOwnerKdId;
  LoginMethod strongestLogin = LoginMethod::kNone;  ///< that ever worked; the stored password goes by no weaker one
  int revision = 1;  ///< given by Records: one more with each change of the record, its password, streams or facts
};

/// The name of the stream that a camera's own record asks for.
inline constexpr char kOwnStream[] = "main";
/// Those of all that a camera may have, the own one first.
inline constexpr std::array<const char*, 3> kStreamNames = {kOwnStream, "sub", "third"};

/// One stream of a stored camera.
struct CameraStream {
  std::string name;     ///< one of kStreamNames; each once
  std::string address;  ///< a whole one, as it was found, without a login: "rtsp://192.0.2.17:554/path"; "": not known
  // What it is asked by. Of the main stream these are the record's own, whatever is given.
  std::string vendor;
  std::string model;
  int port = 0;
  std::string channel;
  std::string sourcePath;

  bool operator==(const CameraStream&) const = default;
};

/// Something that is known of a camera or of one of its streams, and who said so.
struct CameraFact {
  std::string stream;   ///< "": of the camera itself
  std::string name;     ///< JSON key style: "maker", "firmware", "codec", "frameRate"; once for each stream and `from`
  std::string value;    ///< for users
  std::string from;     ///< what said so, such as "onvif" or "measured"
  std::int64_t at = 0;  ///< when, in seconds since 1970

  bool operator==(const CameraFact&) const = default;
};

/// What contact with a stored camera comes to. Times are in seconds since 1970.
struct CameraOutcome {
  Outcome cause = Outcome::kOk;  ///< of the last contact
  std::int64_t since = 0;        ///< of the first contact in a row that came to it; kOk: not before it was switched on
  std::int64_t lastSuccess = 0;  ///< of the last known that came to kOk: of a row of them the first at least; 0: none

  bool operator==(const CameraOutcome&) const = default;
};

/// A contact with a stored camera. Times are in seconds since 1970.
struct CameraContact {
  Outcome cause = Outcome::kOk;
  std::int64_t at = 0;
  std::optional<int> revision = std::nullopt;  ///< that the camera must still have, so that this tells of its record
  std::int64_t lastSuccess = 0;                ///< of the last contact before that came to kOk, if it is known
};

/// A stored camera that refused its login at the last contact.
struct RefusedCamera {
  int id = 0;
  std::string login;       ///< see LoginOf in refused_logins.h
  std::int64_t since = 0;  ///< seconds since 1970
};

/// A change of what contact with a stored camera comes to.
struct CameraEvent {
  std::int64_t id = 0;  ///< larger than those before, and never given again
  int cameraId = 0;
  std::int64_t at = 0;  ///< seconds since 1970
  Outcome cause = Outcome::kOk;
  std::optional<Outcome> before = std::nullopt;  ///< nothing: there was no contact since the record was edited

  bool operator==(const CameraEvent&) const = default;
};

/// How many cameras have a status, and of their last contact what it came to; nothing where there was none.
struct CameraCount {
  CAM_CONN_STATUS status = CAM_CONN_STATUS_NORMAL;
  std::optional<Outcome> cause;
  int count = 0;
};

/// What tells a camera's TLS certificates, by port: the SHA-256 of each one's DER, in hexadecimal.
using Certificates = std::map<int, std::string>;

/// What a stored camera is known again by at another address. Each is "" as long as it is not known.
struct CameraIdentity {
  std::string endpoint;  ///< its id of WS-Discovery
  std::string serial;    ///< serial number, as it says itself

  bool operator==(const CameraIdentity&) const = default;
};

/// What is wrong with a record or password.
struct RecordMistake {
  std::string member;  ///< JSON key style: "port", "sourcePath", "password"
  std::string text;    ///< for users, without the value
};

/// The first mistake that keeps a record from being stored, if there is one.
std::optional<RecordMistake> FindMistake(const CameraRecord& camera, const std::string& password);

/// The same of the streams of a camera. Its text names the stream.
std::optional<RecordMistake> FindMistake(const std::vector<CameraStream>& streams);

/// The same of what is known of a camera.
std::optional<RecordMistake> FindMistake(const std::vector<CameraFact>& facts);

/// The record that a stream is asked by: that of its camera, with what differs for the stream.
CameraRecord RecordOfStream(const CameraStream& stream, CameraRecord camera);

/// Whether the stored password of a camera may stay when its record changes: not when it would go to another address,
/// log in somebody else, or open another path.
bool KeepsPassword(const CameraRecord& before, const CameraRecord& after);

/// The same for its streams (see Records::Streams): not when one is asked by what none was before.
bool KeepsPassword(const std::vector<CameraStream>& before, const std::vector<CameraStream>& after);

}  // namespace recorder
