#include <chrono>
#include <functional>
#include <optional>
#include <stdexcept>
#include <utility>

#include "recorder/device/asked/camera_lock.h"
#include "recorder/device/find/measure.h"
#include "recorder/device/find/measure_json.h"
#include "recorder/host/stored_call.h"
#include "recorder/http/api_request.h"
#include "recorder/own/camera_failure.h"
#include "recorder/own/handlers.h"
#include "recorder/own/main_address.h"
#include "recorder/own/measured_facts.h"
#include "recorder/own/stored_camera.h"
#include "recorder/records/contact_turns.h"
#include "recorder/records/refused_logins.h"
#include "recorder/utility/cause_table.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/config.h"
#include "recorder/utility/file_lock.h"
#include "recorder/utility/json_text.h"
#include "recorder/utility/log.h"
#include "recorder/utility/state_files.h"
#include "recorder/utility/watch_clock.h"

namespace recorder {

namespace {

/// A contact with a stream of a stored camera, which others may edit meanwhile.
class Contact {
 public:
  Contact(Records& records, const CameraRecord& camera)
      : records_(records), camera_(camera), sealedPassword_(records.SealedPassword(camera.id)) {}

  /// Notes what the contact came to. Of what is the recorder's own affair nothing is noted, nor of a login that was not
  /// sent, and whoever asked gets his answer in any case. `isMain`: of a further stream it tells of a refused login
  /// alone.
  void Note(Outcome outcome, bool hasSentLogin, bool isMain) try {
    const bool isRefused = outcome == Outcome::kLoginRefused;
    const bool isOfCamera = outcome != Outcome::kRecorderFailed && outcome != Outcome::kDisabled;
    const bool isNoted = isRefused ? hasSentLogin : isOfCamera && isMain;
    const auto now = isNoted ? records_.Find(camera_.id) : std::nullopt;
    if (now && IsTheSame(*now)) records_.NoteOutcome(now->id, {outcome, WatchClock::Seconds(), now->revision});
  } catch (const RecordsError& error) {
    LogFailure(error.what());
  }

 private:
  /// Whether a contact would be the same one, whatever the name is now.
  bool IsTheSame(const CameraRecord& now) const {
    return KeepsPassword(camera_, now) && camera_.channel == now.channel &&
           records_.SealedPassword(now.id) == sealedPassword_;
  }

  Records& records_;
  CameraRecord camera_;
  std::string sealedPassword_;
};

/// The turn of who contacts a camera for somebody that waits. A check of it that is at hand is soon over, mostly.
CameraLock ContactTurn(const CameraRecord& asked) {
  constexpr std::chrono::seconds kLongestWait{3};
  return {GetConfig().stateFolder / kContactsLock, ContactPlace(asked), Clock::now() + kLongestWait, F_RDLCK};
}

/// Calls the module for a stream of the camera, and notes what came of it.
ApiAnswer Call(const std::string& method, const CameraRecord& camera, const CameraRecord& asked, OwnTools& tools,
               Records& records, std::function<void()> whenLoginTaken = {}) {
  Contact contact(records, camera);
  ApiCall call = StoredCall(tools.module, method, asked);
  call.whenLoginTaken = std::move(whenLoginTaken);
  ApiAnswer answer = RunCall(call, tools.output);
  tools.note.cause = answer.causes;
  tools.note.rungs = answer.rungs;
  if (answer.kind == ApiAnswer::Kind::kException) throw std::runtime_error("The module failed: " + answer.reason);
  const bool isMain = KeepsPassword(camera, asked) && camera.channel == asked.channel;
  if (const auto outcome = OutcomeNamed(answer.causes)) contact.Note(*outcome, answer.hasSentLogin, isMain);
  return answer;
}

bool HasLogin(const Records& records, const CameraRecord& camera) {
  return !camera.user.empty() || !records.SealedPassword(camera.id).empty();
}

/// The turn of who logs in to a camera, until it took the login: so whoever comes next knows whether it was refused.
CameraLock LoginTurn(const CameraRecord& camera) {
  const Config& config = GetConfig();
  return {config.stateFolder / kLoginsLock, LockByteOf(LoginOf(camera)), Clock::now() + config.limits.picture};
}

/// What the camera's own last contact or that of another one of its login came to.
OwnAnswer RememberedRefusal(const Records& records, const CameraRecord& camera) {
  const auto outcome = records.OutcomeOf(camera.id);
  const bool isItsOwn = outcome && MayBeRefusedLogin(outcome->cause);
  OwnAnswer answer = CameraFailure(isItsOwn ? outcome->cause : Outcome::kLoginRefused);
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
  const CameraLock contactTurn = ContactTurn(camera);
  const ApiAnswer answer = Call(kTestMethod, camera, camera, tools, records);
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
  std::optional<CameraLock> turn;
  if (HasLogin(records, camera)) turn.emplace(LoginTurn(camera));
  const CameraLock contactTurn = ContactTurn(asked);  // a check that is over may have met a refusal
  if (!FlagOf(request, "again") && IsLoginRefused(records, camera)) return RememberedRefusal(records, camera);
  if (turn && !*turn) throw HttpError(503, "another picture with this login has not ended", "Retry-After: 5\r\n");
  const ApiAnswer answer = Call(kPictureMethod, camera, asked, tools, records, [&turn] { turn.reset(); });
  std::string picture = PictureIn(answer);
  if (!picture.empty()) return PictureAnswer(std::move(picture));
  return CameraFailure(OutcomeNamed(answer.causes).value_or(Outcome::kRecorderFailed));
}

OwnAnswer MeasureCamera(const OwnRequest& request, OwnTools& /*tools*/) {
  Records records(GetConfig().stateFolder);
  const CameraRecord camera = FindEnabled(records, request);
  const std::string stream = ParseForm(request.http.query).get("stream", kOwnStream).asString();
  const CameraRecord asked = StreamRecord(records, camera, stream);
  if (MainAddress(asked).starts_with("http")) throw HttpError(409, "only streams over RTSP can be measured");
  Contact contact(records, camera);
  const CameraLock turn = ContactTurn(asked);
  const MeasureResult result = MeasureStored(asked, kLongestMeasure);
  contact.Note(result.outcome, result.hasSentLogin, false);  // a test tells whether the camera works
  if (result.outcome != Outcome::kOk) return CameraFailure(result.outcome);
  KeepMeasured(records, asked, stream.empty() ? kOwnStream : stream, result);
  return Success(MeasureJson(result));
}

}  // namespace recorder
