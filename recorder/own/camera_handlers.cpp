#include <cstdint>
#include <map>
#include <utility>

#include "recorder/own/camera_json.h"
#include "recorder/own/camera_wish.h"
#include "recorder/own/entity_tag.h"
#include "recorder/own/handlers.h"
#include "recorder/own/stored_camera.h"
#include "recorder/own/stored_export.h"
#include "recorder/own/typed_members.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/config.h"

namespace recorder {

namespace {

constexpr char kChangedMeanwhile[] = "somebody else has changed the camera meanwhile: read it again";

/// The camera as it is stored now, with its revision as the tag.
OwnAnswer Shown(const Records& records, int id) {
  const auto camera = ReadCamera(records, id);
  if (!camera) throw NoSuchCamera();
  OwnAnswer answer = Success(CameraJson(*camera, records));
  answer.headers = TagLine(TagOf(camera->record.revision));
  return answer;
}

using States = std::map<int, CameraState>;

/// The tag of a list, of the little by which one list is told from another, so that it need not be made for that: what
/// stands in a record changes with its revision.
std::string CamerasTag(const std::map<int, int>& revisions, const States& states) {
  std::string text = PROJECT_VERSION;
  const auto add = [&](std::int64_t number) { text += ' ' + std::to_string(number); };
  for (const auto& [id, revision] : revisions) {
    add(id);
    add(revision);
  }
  for (const auto& [id, state] : states) {
    add(id);
    add(static_cast<int>(state.outcome.cause));
    add(state.outcome.since);
    add(state.outcome.lastSuccess);
    add(state.flips);
    add(state.time ? state.time->count() : -1);
  }
  return TagOf(std::string_view(text));
}

Json::Value ListOf(const Records& records, const States& states) {
  const auto streams = records.StreamNames();
  Json::Value list(Json::arrayValue);
  for (const CameraRecord& camera : records.List()) {
    const auto names = streams.find(camera.id);
    const auto state = states.find(camera.id);
    list.append(CameraSummary(camera, names == streams.end() ? std::vector<std::string>() : names->second,
                              state == states.end() ? std::nullopt : std::optional(state->second), records));
  }
  return list;
}

/// The revision that a camera must have to be changed; nothing where any will do.
std::optional<int> WantedRevision(const OwnRequest& request, const CameraRecord& camera) {
  if (request.http.ifMatch.empty() || request.http.ifMatch == "*") return std::nullopt;
  if (request.http.ifMatch.find('"') == std::string::npos) {
    throw HttpError(400, "If-Match is no tag: one has its quotes, as the ETag of the camera");
  }
  if (!IsMatch(TagOf(camera.revision), request.http.ifMatch)) throw HttpError(412, kChangedMeanwhile);
  return camera.revision;
}

void Require(ChangeResult result) {
  if (result == ChangeResult::kNoCamera) throw NoSuchCamera();
  if (result == ChangeResult::kOtherRevision) throw HttpError(412, kChangedMeanwhile);
}

/// A stored password goes to the streams that it was given for alone.
void RequirePassword(const CameraWish& wish, const CameraRecord& before, const Records& records) {
  const bool isKept = KeepsPassword(before, records.Streams(before.id), wish.record, wish.change);
  if (!isKept && !wish.password) throw BadMember("password", "must be given again, since it would go elsewhere");
}

}  // namespace

OwnAnswer ListCameras(const OwnRequest& request, OwnTools& /*tools*/) {
  const Records records(GetConfig().stateFolder);
  const std::map<int, int> revisions = records.Revisions();  // first: at worst the list is newer than its tag
  const States states = ReadStates(records, GetConfig().stateFolder);
  const std::string tag = CamerasTag(revisions, states);
  if (IsNoneMatch(tag, request.http.ifNoneMatch)) return {304, {}, TagLine(tag)};
  OwnAnswer answer = Success(ListOf(records, states));
  answer.headers = TagLine(tag);
  return answer;
}

OwnAnswer ShowCamera(const OwnRequest& request, OwnTools& /*tools*/) {
  return Shown(Records(GetConfig().stateFolder), IdOf(request));
}

OwnAnswer AddCamera(const OwnRequest& request, OwnTools& /*tools*/) {
  Records records(GetConfig().stateFolder);
  CameraWish wish;
  ReadWish(request.params, {}, records, wish);
  if (wish.change.forgetsLogin) throw BadMember("allowBasic", "has nothing to forget of a new camera");
  if (wish.change.forgetsCertificates) throw BadMember("trustNewCertificate", "has nothing to forget of a new camera");
  const int id =
      records.Add(wish.record, wish.password.value_or(""), wish.change.streams.value_or(std::vector<CameraStream>()),
                  wish.change.facts.value_or(std::vector<CameraFact>()), wish.change.check);
  OwnAnswer answer = Shown(records, id);
  answer.status = 201;
  return answer;
}

OwnAnswer ChangeCamera(const OwnRequest& request, OwnTools& /*tools*/) {
  Records records(GetConfig().stateFolder);
  const CameraRecord before = FindCamera(records, request);
  if (request.http.ifMatch.empty())
    throw HttpError(428, "If-Match is missing: the tag of the camera as you know it, or *");
  CameraWish wish;
  wish.change.revision = WantedRevision(request, before);
  if (request.params.size() == (request.params.isMember("force") ? 1U : 0U)) throw HttpError(400, "nothing to change");
  ReadWish(request.params, before, records, wish);
  RequirePassword(wish, before, records);
  if (wish.password) wish.change.password = &*wish.password;
  Require(records.Change(before.id, wish.change));
  return Shown(records, before.id);
}

OwnAnswer RemoveCamera(const OwnRequest& request, OwnTools& /*tools*/) {
  Records records(GetConfig().stateFolder);
  const CameraRecord camera = FindCamera(records, request);
  Require(records.Remove(camera.id, WantedRevision(request, camera)));
  Json::Value data(Json::objectValue);
  data["undoUntil"] = Json::Int64{SecondsNow() + kUndoTime.count()};
  return Success(data);
}

OwnAnswer RestoreCamera(const OwnRequest& request, OwnTools& /*tools*/) {
  Records records(GetConfig().stateFolder);
  const int id = IdOf(request);
  const auto check = [&] { RefuseStoredTwice(*records.Find(id), records); };
  if (!records.Restore(id, check)) throw HttpError(404, "no such camera was removed within the last minute");
  return Shown(records, id);
}

OwnAnswer ExportCamera(const OwnRequest& request, OwnTools& /*tools*/) {
  const Records records(GetConfig().stateFolder);
  const auto camera = ReadCamera(records, IdOf(request));
  if (!camera) throw NoSuchCamera();
  const ModelExport exported = ExportStored(*camera, records, {TextOf(request, "vendor"), TextOf(request, "model")});
  Json::Value data(Json::objectValue);
  Json::Value& remarks = data["remarks"] = Json::Value(Json::arrayValue);
  for (const std::string& remark : exported.remarks) remarks.append(remark);
  data["file"] = exported.text;
  if (!exported.text.empty()) return Success(data);
  throw HttpError(409, "there is no model to hand on: " + exported.remarks.front()).With("remarks", remarks);
}

}  // namespace recorder
