#include <optional>
#include <stdexcept>
#include <utility>

#include "recorder/device/find/measure.h"
#include "recorder/device/find/measure_json.h"
#include "recorder/host/stored_call.h"
#include "recorder/http/api_request.h"
#include "recorder/own/camera_failure.h"
#include "recorder/own/handlers.h"
#include "recorder/own/measured_facts.h"
#include "recorder/own/stored_camera.h"
#include "recorder/utility/cause_table.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/config.h"
#include "recorder/utility/json_text.h"
#include "recorder/utility/log.h"

namespace recorder {

namespace {

/// Of what is the recorder's own affair nothing is noted, and whoever asked gets his answer in any case.
void Note(Records& records, const CameraRecord& camera, Outcome outcome) try {
  const bool isOfCamera = outcome != Outcome::kRecorderFailed && outcome != Outcome::kDisabled;
  if (isOfCamera) records.NoteOutcome(camera.id, {outcome, SecondsNow(), camera.revision});
} catch (const RecordsError& error) {
  LogFailure(error.what());
}

/// Calls the module, and notes what came of it.
ApiAnswer Call(const std::string& method, const CameraRecord& camera, OwnTools& tools, Records& records) {
  ApiAnswer answer = RunCall(StoredCall(tools.module, method, camera), tools.output);
  if (answer.kind == ApiAnswer::Kind::kException) throw std::runtime_error("The module failed: " + answer.reason);
  if (const auto outcome = OutcomeNamed(answer.causes)) Note(records, camera, *outcome);
  return answer;
}

/// Whether the last contact with the camera ended with a refused login, and nobody has changed it since.
bool IsLoginRefused(const Records& records, int id) {
  const auto outcomes = records.Outcomes();
  const auto last = outcomes.find(id);
  return last != outcomes.end() && last->second.cause == Outcome::kLoginRefused;
}

OwnAnswer RememberedRefusal() {
  OwnAnswer answer = CameraFailure(Outcome::kLoginRefused);
  answer.json["error"]["remembered"] = true;
  return answer;
}

/// The picture of a raw answer of the module's; "" where that is but the default one.
std::string PictureIn(const ApiAnswer& answer) {
  const std::size_t headerEnd = answer.raw.find("\r\n\r\n");
  std::string picture = headerEnd == std::string::npos ? "" : answer.raw.substr(headerEnd + 4);
  return picture.starts_with("\xff\xd8\xff") ? picture : "";
}

OwnAnswer PictureAnswer(std::string picture) {
  const std::string headers = "Content-Type: image/jpeg\r\nContent-Length: " + std::to_string(picture.size()) + "\r\n";
  return {200, {}, headers, std::move(picture)};
}

}  // namespace

OwnAnswer TestCamera(const OwnRequest& request, OwnTools& tools) {
  Records records(GetConfig().stateFolder);
  const CameraRecord camera = FindEnabled(records, request);
  const ApiAnswer answer = Call(kTestMethod, camera, tools, records);
  std::string ignored;
  const Json::Value json = ParseStrictJson(answer.json, ignored).value_or(Json::Value());
  if (json["success"].asBool()) {
    Json::Value data(Json::objectValue);
    data["cause"] = std::string(NameOf(Outcome::kOk));
    return Success(data);
  }
  OwnAnswer failure = CameraFailure(OutcomeNamed(answer.causes).value_or(Outcome::kRecorderFailed));
  failure.json["error"]["module"] = json["error"]["code"];
  return failure;
}

OwnAnswer TakePicture(const OwnRequest& request, OwnTools& tools) {
  Records records(GetConfig().stateFolder);
  const CameraRecord camera = FindEnabled(records, request);
  const CameraRecord asked = StreamRecord(records, camera, TextOf(request, "stream"));
  if (!FlagOf(request, "again") && IsLoginRefused(records, camera.id)) return RememberedRefusal();
  const ApiAnswer answer = Call(kPictureMethod, asked, tools, records);
  std::string picture = PictureIn(answer);
  if (!picture.empty()) return PictureAnswer(std::move(picture));
  return CameraFailure(OutcomeNamed(answer.causes).value_or(Outcome::kRecorderFailed));
}

OwnAnswer MeasureCamera(const OwnRequest& request, OwnTools& /*tools*/) {
  Records records(GetConfig().stateFolder);
  const CameraRecord camera = FindEnabled(records, request);
  const std::string stream = ParseForm(request.http.query).get("stream", kOwnStream).asString();
  const CameraRecord asked = StreamRecord(records, camera, stream);
  const MeasureResult result = MeasureStored(asked, kLongestMeasure);
  Note(records, camera, result.outcome);
  if (result.outcome != Outcome::kOk) return CameraFailure(result.outcome);
  KeepMeasured(records, camera.id, stream.empty() ? kOwnStream : stream, result);
  return Success(MeasureJson(result));
}

}  // namespace recorder
