#include "recorder/ctl/status_command.h"

#include <json/json.h>

#include <algorithm>
#include <iostream>
#include <memory>
#include <optional>
#include <vector>

#include "recorder/ctl/state_folder.h"
#include "recorder/ctl/time_text.h"
#include "recorder/records/camera_state.h"
#include "recorder/utility/cause_table.h"
#include "recorder/utility/json_text.h"
#include "recorder/utility/service.h"

namespace recorder {

namespace {

constexpr int kCameraDown = 1;
constexpr int kNotWatched = 2;

struct OverviewOptions {
  bool isJson = false;
  std::string cause;  // "": any
};

struct StatusRow {
  CameraRecord camera;
  std::optional<CameraState> state;

  bool IsOff() const { return camera.status == CAM_CONN_STATUS_DISABLED; }
  bool IsDown() const { return !IsOff() && state && state->outcome.cause != Outcome::kOk; }
  std::string Cause() const { return state ? std::string(NameOf(state->outcome.cause)) : ""; }
  const char* Word() const {
    if (IsOff()) return "off";
    if (!state) return "unknown";
    return IsDown() ? "down" : "up";
  }
};

std::vector<StatusRow> ReadRows(const std::filesystem::path& stateFolder, const std::string& cause) {
  const Records records(stateFolder);
  auto states = ReadStates(records, stateFolder);
  std::vector<StatusRow> rows;
  for (const CameraRecord& camera : records.List()) {
    const auto state = states.find(camera.id);
    StatusRow row{camera, state == states.end() ? std::nullopt : std::optional(state->second)};
    if (cause.empty() || row.Cause() == cause) rows.push_back(std::move(row));
  }
  return rows;
}

Json::Value ToJson(const StatusRow& row) {
  Json::Value json(Json::objectValue);
  json["id"] = row.camera.id;
  json["name"] = row.camera.name;
  json["state"] = row.Word();
  if (!row.state) return json;
  json["cause"] = row.Cause();
  json["since"] = Json::Int64(row.state->outcome.since);
  json["lastSuccess"] = Json::Int64(row.state->outcome.lastSuccess);
  json["flips"] = row.state->flips;
  if (row.state->time) json["milliseconds"] = Json::Int64(row.state->time->count());
  return json;
}

void PrintAsJson(const std::vector<StatusRow>& rows, bool isWatched) {
  Json::Value json(Json::objectValue);
  json["watched"] = isWatched;
  json["cameras"] = Json::Value(Json::arrayValue);
  for (const StatusRow& row : rows) json["cameras"].append(ToJson(row));
  std::cout << ToText(json) << '\n';
}

void Print(const std::vector<StatusRow>& rows) {
  std::cout << "name\tstate\tsince\tcause\n";
  for (const StatusRow& row : rows) {
    std::cout << row.camera.name << '\t' << row.Word() << '\t' << TimeText(row.state ? row.state->outcome.since : 0)
              << '\t' << (row.state ? row.Cause() : "-") << '\n';
  }
}

void ShowStatus(const OverviewOptions& options, const std::filesystem::path& stateFolder) {
  const bool isWatched = IsServiceRunning(stateFolder, Service::kWatch);
  const std::vector<StatusRow> rows = ReadRows(stateFolder, options.cause);
  options.isJson ? PrintAsJson(rows, isWatched) : Print(rows);
  if (!isWatched) {
    std::cerr << "recorderctl: nobody watches the cameras now: this is what was known last\n";
    throw CLI::RuntimeError(kNotWatched);
  }
  if (std::ranges::any_of(rows, &StatusRow::IsDown)) throw CLI::RuntimeError(kCameraDown);
}

std::vector<std::string> CauseNames() {
  std::vector<std::string> names;
  for (const CauseRow& row : Causes()) names.emplace_back(row.name);
  return names;
}

}  // namespace

void AddStatusCommand(CLI::App& app, const std::string& configOption) {
  CLI::App* command = app.add_subcommand(
      "status",
      "Tell of each stored camera whether it is up, and since when (UTC) and why not: one a line, with tabs between "
      "columns. Exit status 1 when one is down, 2 when nobody watches them");
  const auto options = std::make_shared<OverviewOptions>();
  command->add_flag("--json", options->isJson, "print JSON");
  command->add_option("--cause", options->cause, "those alone with this cause, such as timedOut")
      ->check(CLI::IsMember(CauseNames()));
  command->footer("Examples:\n  recorderctl status\n  recorderctl status --cause loginRefused --json");
  command->callback([options, &configOption] { ShowStatus(*options, StateFolder(configOption)); });
}

}  // namespace recorder
