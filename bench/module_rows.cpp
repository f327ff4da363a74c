#include <filesystem>
#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "bench/rows.h"
#include "recorder/host/api_call.h"
#include "recorder/host/host.h"
#include "rig/recorder.h"
#include "rig/temp_folder.h"

namespace bench {

using namespace rig;

namespace {

constexpr int kCalls = 2000;  // a sample
constexpr char kVendor[] = "Simcam";
constexpr char kModel[] = "RTSP-H264";
constexpr Goal kDispatchGoal{.bound = 1.25};
constexpr Goal kDocumentGoal{.bound = 0.5};

using Handler = std::function<void(NORV::APIRequest*, NORV::APIResponse*)>;

const std::filesystem::path kModels = std::filesystem::path(SOURCE_FOLDER) / "models";

recorder::Host StartModule(const TempFolder& folder) {
  Json::Value config;
  config["stateFolder"] = "state";
  config["modelsFolder"] = kModels.string();
  config["workFolder"] = kModels.string();
  config["module"] = MODULE_FILE;
  return recorder::StartHost(folder.Write("recorder.json", ToText(config)));
}

/// Runs `handler` as a method of the module, with request and response as the recorder makes them, and returns what it
/// answered.
Json::Value RunInCall(const Json::Value& parameters, Handler handler) {
  static Handler current;  // a row of the module's table has a mere function
  current = std::move(handler);
  const recorder::ModuleMethod method{
      "", 1, "CamCap", [](NORV::APIRequest* request, NORV::APIResponse* response) { current(request, response); }};
  const recorder::ApiAnswer answer = recorder::RunCall({&method, parameters, {}, true});
  if (answer.kind != recorder::ApiAnswer::Kind::kJson) throw WrongAnswer("no answer: " + answer.reason);
  return ParseJson(answer.json)["data"];
}

/// Times a call of `handler` by a sample, whose answer must be `right`.
Way TimePerCall(const Json::Value& parameters, Handler handler, const Json::Value& right) {
  return [=] {
    double time = 0;
    const Json::Value answer = RunInCall(parameters, [&](NORV::APIRequest* request, NORV::APIResponse* response) {
      time = TimeOf([&] {
        for (int i = 0; i < kCalls; ++i) handler(request, response);
      });
    });
    if (answer != right) throw WrongAnswer(ToText(answer));
    return time / kCalls;
  };
}

/// Builds a document like that of `answer`, member by member, and answers with it.
Handler BareJsonCpp(const Json::Value& answer) {
  std::vector<std::pair<std::string, Json::Value>> members;
  const Json::Value& capability = answer["camCap"][0];
  for (const std::string& name : capability.getMemberNames()) members.emplace_back(name, capability[name]);
  return [members = std::move(members)](NORV::APIRequest*, NORV::APIResponse* response) {
    Json::Value document(Json::objectValue);
    for (const auto& [name, value] : members) document[name.c_str()] = value;
    Json::Value data(Json::objectValue);
    data["camCap"].append(std::move(document));
    response->SetSuccess(data);
  };
}

Way TimePerParse(const std::string& text) {
  return [text] {
    Json::Value file;
    const double time = TimeOf([&] {
      for (int i = 0; i < kCalls; ++i) {
        file = Json::Value();
        std::istringstream(text) >> file;
      }
    });
    if (file["vendor"] != kVendor) throw WrongAnswer("another file");
    return time / kCalls;
  };
}

}  // namespace

void AddModuleRows(Report& table) {
  const TempFolder folder;
  const recorder::Host host = StartModule(folder);
  const Handler entry = host.module.Find("CamCap")->handler;

  Json::Value parameters;
  parameters["vendor"] = "User";
  const Json::Value userDefined = RunInCall(parameters, entry);
  AddRow(table, "entry and dispatch", "CamCap of vendor \"User\", in one process", "the same document by bare JsonCpp",
         Compare(TimePerCall(parameters, entry, userDefined),
                 TimePerCall(parameters, BareJsonCpp(userDefined), userDefined)),
         kDispatchGoal);

  parameters["vendor"] = kVendor;
  parameters["model"] = kModel;
  const Json::Value known = RunInCall(parameters, entry);
  AddRow(table, "model document, warm", "CamCap of a known model, in one process", "one parse of its model file",
         Compare(TimePerCall(parameters, entry, known), TimePerParse(ReadText(kModels / "simcam.json"))),
         kDocumentGoal);
}

}  // namespace bench
