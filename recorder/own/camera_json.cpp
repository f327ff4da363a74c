#include "recorder/own/camera_json.h"

#include "recorder/device/model/path_privacy.h"
#include "recorder/http/own_request.h"
#include "recorder/own/main_address.h"
#include "recorder/utility/config.h"
#include "recorder/utility/log.h"

namespace recorder {

namespace {

Json::Value StateJson(const std::optional<CameraState>& state) {
  if (!state) return {};
  Json::Value json(Json::objectValue);
  json["cause"] = std::string(NameOf(state->outcome.cause));
  json["since"] = TimeOf(state->outcome.since);
  json["lastSuccess"] = TimeOf(state->outcome.lastSuccess);
  json["flips"] = state->flips;
  json["milliseconds"] = state->time ? Json::Value(Json::Int64(state->time->count())) : Json::Value();
  return json;
}

/// recorderctl stores a path that holds a login, too. It is for nobody's eyes.
std::string ShownPath(const std::string& path) { return FindPathLogin(path).empty() ? path : ""; }

/// Whether a path holds the camera's password, under whatever name. One that cannot be read is of no use, and hides
/// nothing: whoever edits the camera sends its streams back as he sees them.
bool TellsPassword(const std::string& path, const Records& records, const CameraRecord& camera) try {
  if (path.empty()) return false;  // most are: none need be decrypted
  std::string password = records.Password(camera);
  const WipeAtEnd wipe(password);
  return HoldsPassword(path, password);
} catch (const RecordsError&) {
  return false;
}

void HidePassword(Json::Value& path, const Records& records, const CameraRecord& camera) {
  if (TellsPassword(path.asString(), records, camera)) path = "";
}

/// All but the streams.
Json::Value RecordJson(const CameraRecord& camera, const std::optional<CameraState>& state, const Records& records) {
  Json::Value json = PlainJson(camera);
  json["sourcePath"] = ShownPath(camera.sourcePath);
  HidePassword(json["sourcePath"], records, camera);
  json["enabled"] = camera.status != CAM_CONN_STATUS_DISABLED;
  json["owner"] = camera.ownerKdId;
  json["state"] = StateJson(state);
  return json;
}

/// A stream of the camera whose shown record is `record`. Only paths that nobody changes without the password are
/// compared with it. An address is changed without it, so hiding one would say that a guess is right: it is hidden
/// where a path is, of which it may be made.
Json::Value ShownStream(const CameraStream& stream, const Json::Value& record, const Records& records,
                        const CameraRecord& camera) {
  Json::Value json = StreamJson(stream);
  HidePassword(json["sourcePath"], records, camera);
  const bool isHidden = json["sourcePath"] != stream.sourcePath || record["sourcePath"] != camera.sourcePath;
  if (isHidden) json["address"] = "";
  return json;
}

bool HasPassword(const Records& records, const CameraRecord& camera) try {
  std::string password = records.Password(camera);
  const WipeAtEnd wipe(password);
  return !password.empty();
} catch (const RecordsError& error) {
  LogFailure(error.what());
  return false;
}

}  // namespace

Json::Value PlainJson(const CameraRecord& camera) {
  Json::Value json(Json::objectValue);
  json["id"] = camera.id;
  json["name"] = camera.name;
  json["vendor"] = camera.vendor;
  json["model"] = camera.model;
  json["host"] = camera.host;
  json["port"] = camera.port;
  json["user"] = camera.user;
  json["channel"] = camera.channel;
  json["sourcePath"] = camera.sourcePath;
  json["revision"] = camera.revision;
  return json;
}

Json::Value StreamJson(const CameraStream& stream) {
  Json::Value json(Json::objectValue);
  json["name"] = stream.name;
  json["address"] = ShownPath(stream.address);
  json["vendor"] = stream.vendor;
  json["model"] = stream.model;
  json["port"] = stream.port;
  json["channel"] = stream.channel;
  json["sourcePath"] = ShownPath(stream.sourcePath);
  return json;
}

Json::Value FactJson(const CameraFact& fact) {
  Json::Value json(Json::objectValue);
  json["stream"] = fact.stream;
  json["name"] = fact.name;
  json["value"] = fact.value;
  json["from"] = fact.from;
  json["at"] = TimeOf(fact.at);
  return json;
}

Json::Value CameraSummary(const CameraRecord& camera, const std::vector<std::string>& streams,
                          const std::optional<CameraState>& state, const Records& records) {
  Json::Value json = RecordJson(camera, state, records);
  Json::Value& names = json["streams"] = Json::Value(Json::arrayValue);
  for (const std::string& name : streams) names.append(name);
  return json;
}

std::optional<WholeCamera> ReadCamera(const Records& records, int id) {
  const auto record = records.Find(id);
  if (!record) return std::nullopt;
  return WholeCamera{.record = *record,
                     .streams = records.Streams(id),
                     .facts = records.Facts(id),
                     .state = ReadState(records, GetConfig().stateFolder, id),
                     .hasPassword = HasPassword(records, *record)};
}

Json::Value CameraJson(const WholeCamera& camera, const Records& records) {
  Json::Value json = RecordJson(camera.record, camera.state, records);
  for (const char* list : {"streams", "facts"}) json[list] = Json::Value(Json::arrayValue);
  for (CameraStream stream : camera.streams) {
    const bool isUnknown = stream.name == kOwnStream && stream.address.empty();
    if (isUnknown) stream.address = MainAddress(camera.record);
    json["streams"].append(ShownStream(stream, json, records, camera.record));
  }
  for (const CameraFact& fact : camera.facts) json["facts"].append(FactJson(fact));
  json["hasPassword"] = camera.hasPassword;
  return json;
}

}  // namespace recorder
