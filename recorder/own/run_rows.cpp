#include "recorder/own/run_rows.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "recorder/net/camera_address.h"
#include "recorder/own/typed_members.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

/// What other lists of cameras take, too.
constexpr std::size_t kLongestRowName = 64;

constexpr std::string_view kRowMembers[] = {"name",    "vendor",     "model", "host",       "port",    "user",
                                            "channel", "sourcePath", "codec", "streamType", "password"};

// As the module's test of a camera spells them.
constexpr std::string_view kCodecs[] = {"", "H.264", "H.265", "MJPEG", "MPEG4", "MXPEG"};
constexpr std::string_view kStreamTypes[] = {"", "RTSP", "HTTP"};

void SetChoice(const Json::Value& object, const char* member, std::span<const std::string_view> choices,
               std::string& text) {
  SetText(object, member, text);
  if (std::ranges::find(choices, text) == choices.end()) throw BadMember(member, "no such one");
}

void ReadRow(const Json::Value& object, RunRow& row) {
  if (!object.isObject()) throw BadMember("rows", "must be objects");
  RefuseOtherMembers(object, kRowMembers, "");
  RunCamera& camera = row.camera;
  SetText(object, "name", camera.name);
  SetText(object, "vendor", camera.vendor);
  SetText(object, "model", camera.model);
  SetText(object, "host", camera.host);
  SetText(object, "user", camera.user);
  SetText(object, "channel", camera.channel);
  SetPath(object, "sourcePath", camera.sourcePath);
  SetChoice(object, "codec", kCodecs, camera.codec);
  SetChoice(object, "streamType", kStreamTypes, camera.streamType);
  SetNumber(object, "port", 1, kLargestPort, camera.port);
  SetText(object, "password", row.password);
  if (CountCharacters(camera.name) > kLongestRowName) {
    throw BadMember("name", "longer than " + std::to_string(kLongestRowName) + " characters");
  }
  if (camera.host.empty()) throw BadMember("host", "missing");
  if (camera.name.empty()) camera.name = camera.host;
  if (const auto mistake = FindMistake(camera, row.password)) throw BadMember(mistake->member, mistake->text);
}

/// What is wrong with the row of a line; nothing where it is right.
std::optional<Json::Value> MistakeIn(const Json::Value& object, unsigned line, RunRow& row) {
  try {
    ReadRow(object, row);
    return std::nullopt;
  } catch (const HttpError& error) {
    Json::Value mistake = error.More();
    mistake["line"] = line;
    mistake["message"] = error.what();
    return mistake;
  }
}

}  // namespace

void ReadRows(const Json::Value& list, std::vector<RunRow>& rows) {
  if (!list.isArray() || list.empty()) throw BadMember("rows", "must be a list of rows");
  if (list.size() > kMostRowsAtOnce) throw BadMember("rows", "more than " + std::to_string(kMostRowsAtOnce));
  rows.resize(list.size());
  Json::Value mistakes(Json::arrayValue);
  for (unsigned i = 0; i < list.size() && mistakes.size() < kMostRowMistakes; ++i) {
    if (auto mistake = MistakeIn(list[i], i + 1, rows[i])) mistakes.append(std::move(*mistake));
  }
  if (mistakes.empty()) return;
  throw HttpError(400, "rows have mistakes, so that none was added").With("member", "rows").With("rows", mistakes);
}

}  // namespace recorder
