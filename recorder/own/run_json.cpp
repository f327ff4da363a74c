#include "recorder/own/run_json.h"

#include "recorder/http/own_request.h"

namespace recorder {

namespace {

const char* StateOf(const RunResult& row) {
  if (!row.result.empty()) return "done";
  return row.isAtHand ? "atHand" : "waiting";
}

}  // namespace

Json::Value RunJson(const Run& run, bool hasTester) {
  Json::Value json(Json::objectValue);
  json["id"] = run.id;
  json["state"] = std::string(NameOf(run.state));
  json["hasTester"] = hasTester;
  json["owner"] = run.owner;
  json["openedAt"] = TimeOf(run.openedAt);
  json["startedAt"] = TimeOf(run.startedAt);
  json["endedAt"] = TimeOf(run.endedAt);
  int done = 0;
  Json::Value& results = json["results"] = Json::Value(Json::objectValue);
  for (const auto& [result, count] : run.results) {
    results[result] = count;
    done += count;
  }
  json["rows"] = run.rows;
  json["done"] = done;
  json["atHand"] = run.atHand;
  json["waiting"] = run.rows - done - run.atHand;
  return json;
}

Json::Value RowJson(const RunResult& row) {
  Json::Value json(Json::objectValue);
  json["number"] = row.camera.id;
  json["name"] = row.camera.name;
  json["vendor"] = row.camera.vendor;
  json["model"] = row.camera.model;
  json["host"] = row.camera.host;
  json["port"] = row.camera.port;
  json["user"] = row.camera.user;
  json["channel"] = row.camera.channel;
  json["sourcePath"] = row.camera.sourcePath;
  json["codec"] = row.camera.codec;
  json["streamType"] = row.camera.streamType;
  json["state"] = StateOf(row);
  json["cause"] = TextOrNull(row.result);
  json["at"] = TimeOf(row.at);
  json["milliseconds"] = row.time.count() == 0 ? Json::Value() : Json::Value(Json::Int64(row.time.count()));
  return json;
}

}  // namespace recorder
