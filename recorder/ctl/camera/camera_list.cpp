#include "recorder/ctl/camera/camera_list.h"

#include <json/json.h>

#include <iostream>
#include <memory>
#include <string>
#include <utility>

#include "recorder/ctl/camera/camera_input.h"
#include "recorder/ctl/state_folder.h"
#include "recorder/own/camera_json.h"
#include "recorder/records/records.h"
#include "recorder/utility/json_text.h"

namespace recorder {

namespace {

struct ShowOptions {
  int id = 0;
  bool isJson = false;
};

const char* StatusName(CAM_CONN_STATUS status) { return status == CAM_CONN_STATUS_DISABLED ? "disabled" : "enabled"; }

Json::Value ToJson(const CameraRecord& camera) {
  Json::Value json = PlainJson(camera);
  json["status"] = StatusName(camera.status);
  json["ownerKdId"] = camera.ownerKdId;
  json["strongestLogin"] = NameOf(camera.strongestLogin);
  return json;
}

/// What a stream is asked by, in one line.
std::string TextOf(const CameraStream& stream) {
  std::string text = stream.vendor;
  for (const std::string* part : {&stream.model, &stream.sourcePath, &stream.address}) {
    if (!part->empty()) text += ' ' + *part;
  }
  return text + " at port " + std::to_string(stream.port);
}

void ListAsJson(const Records& records) {
  Json::Value list(Json::arrayValue);
  for (const CameraRecord& camera : records.List()) list.append(ToJson(camera));
  std::cout << ToText(list) << '\n';
}

void List(const Records& records) {
  std::cout << "id\tstatus\tname\tvendor\tmodel\tchannel\thost\tport\n";
  for (const CameraRecord& camera : records.List()) {
    std::cout << camera.id << '\t' << StatusName(camera.status) << '\t' << camera.name << '\t' << camera.vendor << '\t'
              << camera.model << '\t' << camera.channel << '\t' << camera.host << '\t' << camera.port << '\n';
  }
}

void ShowAsJson(Json::Value json, const Records& records) {
  const int id = json["id"].asInt();
  for (const CameraStream& stream : records.Streams(id)) json["streams"].append(StreamJson(stream));
  json["facts"] = Json::Value(Json::arrayValue);
  for (const CameraFact& fact : records.Facts(id)) json["facts"].append(FactJson(fact));
  json["certificates"] = Json::Value(Json::objectValue);
  for (const auto& [port, sha256] : records.PinnedCertificates(id)) json["certificates"][std::to_string(port)] = sha256;
  std::cout << ToText(json) << '\n';
}

void ShowAsText(const Json::Value& json, const Records& records) {
  const int id = json["id"].asInt();
  for (const std::string& name : json.getMemberNames()) std::cout << name << ": " << json[name].asString() << '\n';
  for (const CameraStream& stream : records.Streams(id)) {
    std::cout << "stream " << stream.name << ": " << TextOf(stream) << '\n';
  }
  for (const CameraFact& fact : records.Facts(id)) {
    std::cout << (fact.stream.empty() ? "" : fact.stream + ' ') << fact.name << ": " << fact.value << " (" << fact.from
              << ")\n";
  }
  for (const auto& [port, sha256] : records.PinnedCertificates(id)) {
    std::cout << "certificate at port " << port << ": SHA-256 " << sha256 << '\n';
  }
}

void Show(const ShowOptions& options, const Records& records) {
  Json::Value json = ToJson(FindCamera(records, options.id));
  const CameraIdentity identity = records.Identities()[options.id];
  json["endpoint"] = identity.endpoint;
  json["serial"] = identity.serial;
  options.isJson ? ShowAsJson(std::move(json), records) : ShowAsText(json, records);
}

void AddJsonFlag(CLI::App& command, bool& isJson) { command.add_flag("--json", isJson, "print JSON"); }

void AddList(CLI::App& cameraCommand, const std::string& configOption) {
  CLI::App* list =
      cameraCommand.add_subcommand("list", "List the stored cameras, one a line, with tabs between columns");
  const auto isJson = std::make_shared<bool>(false);
  AddJsonFlag(*list, *isJson);
  list->footer("Example:\n  recorderctl camera list --json");
  list->callback([isJson, &configOption] {
    const Records records(StateFolder(configOption));
    *isJson ? ListAsJson(records) : List(records);
  });
}

void AddShow(CLI::App& cameraCommand, const std::string& configOption) {
  CLI::App* show = cameraCommand.add_subcommand("show", "Show one camera, without its password");
  const auto options = std::make_shared<ShowOptions>();
  AddId(*show, options->id);
  AddJsonFlag(*show, options->isJson);
  show->footer("Example:\n  recorderctl camera show 3");
  show->callback([options, &configOption] { Show(*options, Records(StateFolder(configOption))); });
}

}  // namespace

void AddCameraLists(CLI::App& cameraCommand, const std::string& configOption) {
  AddList(cameraCommand, configOption);
  AddShow(cameraCommand, configOption);
}

}  // namespace recorder
