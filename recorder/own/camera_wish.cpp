#include "recorder/own/camera_wish.h"

#include <algorithm>
#include <vector>

#include "recorder/device/model/known_models.h"
#include "recorder/device/model/model_files.h"
#include "recorder/net/camera_address.h"
#include "recorder/own/camera_parts.h"
#include "recorder/own/model_document.h"
#include "recorder/own/typed_members.h"
#include "recorder/records/camera_places.h"

namespace recorder {

namespace {

constexpr std::string_view kWishMembers[] = {
    "name",       "vendor",  "model", "host",    "port",  "user",  "password",   "channel",
    "sourcePath", "enabled", "owner", "streams", "facts", "force", "allowBasic", "trustNewCertificate"};

void SetRecord(const Json::Value& body, CameraRecord& camera) {
  constexpr int kMostOwners = 1 << 30;
  SetText(body, "name", camera.name);
  SetText(body, "vendor", camera.vendor);
  SetText(body, "model", camera.model);
  SetText(body, "host", camera.host);
  SetText(body, "user", camera.user);
  SetText(body, "channel", camera.channel);
  SetPath(body, "sourcePath", camera.sourcePath);
  SetNumber(body, "port", 1, kLargestPort, camera.port);
  SetNumber(body, "owner", 0, kMostOwners, camera.ownerKdId);
  if (!body.isMember("enabled")) return;
  camera.status = FlagIn(body, "enabled") ? CAM_CONN_STATUS_NORMAL : CAM_CONN_STATUS_DISABLED;
}

std::optional<std::string> PasswordIn(const Json::Value& body) {
  if (body["password"].isNull()) return std::nullopt;
  std::string password;
  SetText(body, "password", password);
  return password;
}

void Refuse(const std::optional<RecordMistake>& mistake) {
  if (mistake) throw BadMember(mistake->member, mistake->text);
}

/// Gives a record the recorder's own names of its model, which `member` of the body tells.
void NameModelOf(CameraRecord& camera, const std::vector<ModelName>& models, const char* member, bool isForced) {
  const std::string wanted = PlainName(camera.vendor + " " + camera.model);
  if (TakeModelName(camera, models) || isForced || camera.vendor.empty()) return;
  throw BadMember(member, "no such model is known").With("nearest", NearestJson(models, wanted));
}

/// Of all streams but the main one, which has those of its record.
void NameModelsOf(std::vector<CameraStream>& streams, const CameraRecord& camera, const std::vector<ModelName>& models,
                  bool isForced) {
  for (CameraStream& stream : streams) {
    if (stream.name == kOwnStream) continue;
    CameraRecord asked = RecordOfStream(stream, camera);
    NameModelOf(asked, models, "streams", isForced);
    stream.vendor = asked.vendor;
    stream.model = asked.model;
  }
}

void NameModels(const Json::Value& body, CameraWish& wish) {
  const bool isRenamed = body.isMember("vendor") || body.isMember("model");
  if (!isRenamed && !wish.change.streams) return;
  const std::vector<ModelName> models = KnownModels(*Models());
  const bool isForced = FlagIn(body, "force");
  if (isRenamed) NameModelOf(wish.record, models, "model", isForced);
  if (wish.change.streams) NameModelsOf(*wish.change.streams, wish.record, models, isForced);
}

void RefuseMistakes(const CameraWish& wish) {
  Refuse(FindMistake(wish.record, wish.password.value_or("")));
  if (wish.change.streams) Refuse(FindMistake(*wish.change.streams));
  if (wish.change.facts) Refuse(FindMistake(*wish.change.facts));
}

}  // namespace

void RefuseStoredTwice(const CameraRecord& camera, const Records& records) {
  const auto other = FindSamePlace(camera, records.List());
  if (!other) return;
  Json::Value stored(Json::objectValue);
  stored["id"] = other->id;
  stored["name"] = other->name;
  throw HttpError(409, "the camera is stored already").With("camera", stored);
}

void ReadWish(const Json::Value& body, const CameraRecord& before, const Records& records, CameraWish& wish) {
  RefuseOtherMembers(body, kWishMembers, "");
  wish.record = before;
  SetRecord(body, wish.record);
  wish.password = PasswordIn(body);
  if (body.isMember("streams")) wish.change.streams = StreamsIn(body["streams"], wish.record.host);
  if (body.isMember("facts")) wish.change.facts = FactsIn(body["facts"]);
  wish.change.forgetsLogin = FlagIn(body, "allowBasic");
  wish.change.forgetsCertificates = FlagIn(body, "trustNewCertificate");
  NameModels(body, wish);
  RefuseMistakes(wish);
  // What the body names alone: others may change the rest before this is stored.
  wish.change.record = [&body, named = wish.record](CameraRecord& camera) {
    SetRecord(body, camera);
    if (!body.isMember("vendor") && !body.isMember("model")) return;
    camera.vendor = named.vendor;
    camera.model = named.model;
  };
  if (FlagIn(body, "force") || IsSamePlace(before, wish.record)) return;
  wish.change.check = [&records, &wish] { RefuseStoredTwice(wish.record, records); };
}

}  // namespace recorder
