#include "recorder/webapi/ctl/camera_command.h"

#include <json/json.h>

#include <iostream>
#include <memory>
#include <stdexcept>

#include "recorder/utility/files.h"
#include "recorder/utility/records.h"
#include "recorder/utility/text.h"
#include "recorder/webapi/cgi_answer.h"
#include "recorder/webapi/ctl/camera_csv.h"
#include "recorder/webapi/ctl/camera_edit.h"
#include "recorder/webapi/ctl/password_input.h"
#include "recorder/webapi/ctl/state_folder.h"

namespace recorder {

namespace {

struct CameraOptions {
  CameraRecord camera;
  bool hasNoPassword = false;
  bool isJson = false;
  std::string status;
  std::string csvFile;
};

std::string CameraPassword(const CameraOptions& options) {
  if (options.hasNoPassword) return "";
  std::string password = ReadPassword("Password of the camera");
  if (password.empty()) throw std::runtime_error("no password on standard input; --no-password stores none");
  return password;
}

void Expect(bool isThere, int id) {
  if (!isThere) throw std::runtime_error("there is no camera " + std::to_string(id));
}

const char* StatusName(CAM_CONN_STATUS status) { return status == CAM_CONN_STATUS_DISABLED ? "disabled" : "enabled"; }

void Add(CameraOptions& options, Records records) {
  if (options.camera.name.empty()) options.camera.name = options.camera.host;
  std::string password = CameraPassword(options);
  const WipeAtEnd wipe(password);
  const int id = records.Add(options.camera, password);
  std::cout << "added camera " << id << "\n";
}

Json::Value ToJson(const CameraRecord& camera) {
  Json::Value json;
  json["id"] = camera.id;
  json["name"] = camera.name;
  json["vendor"] = camera.vendor;
  json["model"] = camera.model;
  json["host"] = camera.host;
  json["port"] = camera.port;
  json["user"] = camera.user;
  json["channel"] = camera.channel;
  json["sourcePath"] = camera.sourcePath;
  json["status"] = StatusName(camera.status);
  json["ownerKdId"] = camera.ownerKdId;
  json["strongestLogin"] = NameOf(camera.strongestLogin);
  return json;
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

void Show(const CameraOptions& options, const Records& records) {
  const auto camera = records.Find(options.camera.id);
  Expect(camera.has_value(), options.camera.id);
  const Json::Value json = ToJson(*camera);
  if (options.isJson) {
    std::cout << ToText(json) << '\n';
    return;
  }
  for (const std::string& name : json.getMemberNames()) std::cout << name << ": " << json[name].asString() << '\n';
}

void SetPassword(const CameraOptions& options, Records records) {
  Expect(records.Find(options.camera.id).has_value(), options.camera.id);  // before the user types
  std::string password = CameraPassword(options);
  const WipeAtEnd wipe(password);
  Expect(records.SetPassword(options.camera.id, password), options.camera.id);
}

void SetStatus(const CameraOptions& options, Records records) {
  const CAM_CONN_STATUS status = options.status == "disabled" ? CAM_CONN_STATUS_DISABLED : CAM_CONN_STATUS_NORMAL;
  Expect(records.SetStatus(options.camera.id, status), options.camera.id);
}

void Report(const std::string& file, const ListMistake& mistake) {
  std::cerr << "recorderctl: " << file << ", line " << mistake.line;
  if (!mistake.column.empty()) std::cerr << ", column " << EscapeControls(mistake.column);
  std::cerr << ": " << mistake.text << "\n";
}

void Import(const std::string& file, Records records) {
  std::string text = ReadFile(file);
  const WipeAtEnd wipe(text);
  CameraList list = ReadCameraCsv(text);
  int imported = 0;
  for (ListedCamera& listed : list.cameras) {
    const WipeAtEnd wipePassword(listed.password);
    try {
      records.Add(listed.camera, listed.password);
      ++imported;
    } catch (const RecordsError& error) {
      list.mistakes.push_back({listed.line, "", error.what()});
    }
  }
  for (const ListMistake& mistake : list.mistakes) Report(file, mistake);
  std::cout << "imported " << imported << " cameras\n";
  if (!list.mistakes.empty()) throw CLI::RuntimeError(1);
}

void AddRecordOptions(CLI::App& add, CameraOptions& options) {
  CameraRecord& camera = options.camera;
  add.add_option("--vendor", camera.vendor, "vendor, as the model list names it")->required();
  add.add_option("--model", camera.model, "model, as the model list names it")->required();
  add.add_option("--host", camera.host, "host name or address")->required();
  add.add_option("--port", camera.port, "port")->required()->check(CLI::Range(1, 65535));
  add.add_option("--name", camera.name, "name for users (default: the host)");
  add.add_option("--user", camera.user, "user name at the camera");
  add.add_option("--channel", camera.channel, "channel (default: any)");
  add.add_option("--source-path", camera.sourcePath, "path of the stream, for a model that asks for it");
  add.add_option("--owner", camera.ownerKdId, "id of the recording server that owns the camera (default: 0, this one)")
      ->check(CLI::NonNegativeNumber);
}

void AddNoPasswordFlag(CLI::App& command, CameraOptions& options) {
  command.add_flag("--no-password", options.hasNoPassword, "store no password");
}

}  // namespace

void AddCameraCommands(CLI::App& app, const std::string& configOption) {
  CLI::App* command = app.add_subcommand("camera", "Manage the stored cameras");
  command->require_subcommand(1);
  const auto options = std::make_shared<CameraOptions>();
  const auto addNumbered = [&](const char* name, const char* description) {
    CLI::App* numbered = command->add_subcommand(name, description);
    numbered->add_option("id", options->camera.id, "the camera's id")->required();
    return numbered;
  };

  CLI::App* add =
      command->add_subcommand("add", "Store a camera; its password is read from standard input or a prompt");
  AddRecordOptions(*add, *options);
  AddNoPasswordFlag(*add, *options);
  add->footer(
      "Example:\n"
      "  recorderctl camera add --vendor User --model \"\" --host 192.0.2.17 --port 554 --user admin \\\n"
      "    --source-path /stream1");
  add->callback([options, &configOption] { Add(*options, Records(StateFolder(configOption))); });

  const auto addJsonFlag = [&](CLI::App* printing) {
    printing->add_flag("--json", options->isJson, "print JSON");
    return printing;
  };
  addJsonFlag(command->add_subcommand("list", "List the stored cameras, one a line, with tabs between columns"))
      ->callback([options, &configOption] {
        const Records records(StateFolder(configOption));
        options->isJson ? ListAsJson(records) : List(records);
      });
  addJsonFlag(addNumbered("show", "Show one camera, without its password"))->callback([options, &configOption] {
    Show(*options, Records(StateFolder(configOption)));
  });
  AddCameraEditCommand(*command, configOption);
  addNumbered("remove", "Remove a camera")->callback([options, &configOption] {
    Expect(Records(StateFolder(configOption)).Remove(options->camera.id), options->camera.id);
  });

  CLI::App* password = addNumbered("password", "Change a camera's password, read from standard input or a prompt");
  AddNoPasswordFlag(*password, *options);
  password->callback([options, &configOption] { SetPassword(*options, Records(StateFolder(configOption))); });

  CLI::App* status = addNumbered("status", "Enable or disable a camera; a disabled one gets the default picture");
  status->add_option("status", options->status, "enabled or disabled")
      ->required()
      ->check(CLI::IsMember({"enabled", "disabled"}));
  status->callback([options, &configOption] { SetStatus(*options, Records(StateFolder(configOption))); });

  CLI::App* importing = command->add_subcommand("import", "Store the cameras of a CSV file");
  importing->add_option("file", options->csvFile, "CSV file, whose first line names the columns")->required();
  importing->footer(
      "The columns are vendor, model, host and port, and where they are known name, user, password, channel, "
      "sourcePath.\n"
      "Example:\n"
      "  recorderctl discover > cameras.csv && recorderctl camera import cameras.csv");
  importing->callback([options, &configOption] { Import(options->csvFile, Records(StateFolder(configOption))); });
}

}  // namespace recorder
