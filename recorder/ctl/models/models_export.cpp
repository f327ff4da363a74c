#include "recorder/ctl/models/models_export.h"

#include <ctime>
#include <iostream>
#include <memory>
#include <stdexcept>

#include "recorder/ctl/camera/camera_input.h"
#include "recorder/ctl/progress.h"
#include "recorder/ctl/state_folder.h"
#include "recorder/ctl/stored_call_command.h"
#include "recorder/device/asked/export_model.h"
#include "recorder/device/model/built_in_models.h"
#include "recorder/host/host.h"
#include "recorder/host/stored_call.h"
#include "recorder/media/codecs.h"
#include "recorder/own/stored_export.h"
#include "recorder/utility/day_text.h"
#include "recorder/utility/json_text.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

struct ExportOptions {
  int id = 0;
  ExportNames names;
  std::string codec;
};

/// Whether CameraTest finds the camera's stream in that codec, over "RTSP" or "HTTP".
bool IsThere(const Host& host, const CameraRecord& camera, const std::string& codec, const std::string& way) {
  ApiCall call = StoredCall(host.module, kTestMethod, camera);
  call.params["camVideoType"] = codec;
  call.params["camStreamingType"] = way;
  const Progress progress(camera.name);
  std::string ignored;  // an answer that is no JSON is no success either
  return ParseStrictJson(RunCall(call).json, ignored).value_or(Json::Value())["success"].asBool();
}

/// What was not tested is not handed on.
void Test(const Host& host, const CameraRecord& camera, UserStream& stream) {
  if (IsThere(host, camera, stream.codec, "RTSP")) return;
  const Codec* codec = CodecOfName(stream.codec);
  stream.isOverHttp = codec != nullptr && codec->isOverHttp && IsThere(host, camera, stream.codec, "HTTP");
  const std::string what = stream.codec.empty() ? "video over RTSP" : stream.codec;
  if (!stream.isOverHttp) throw std::runtime_error("the camera sends no " + what + " there");
}

ModelExport ExportUser(const ExportOptions& options, const std::string& configOption) {
  if (options.names.vendor.empty() || options.names.model.empty()) {
    throw CLI::ValidationError("a camera of vendor User is exported with --vendor and --model");
  }
  const Host host = StartHost(FindConfigFile(configOption));
  const Records records(host.config.stateFolder);
  const CameraRecord camera = FindEnabled(records, options.id);
  UserStream stream{{}, camera.sourcePath, options.codec, false, DayText(std::time(nullptr))};
  Test(host, camera, stream);
  stream.camera = Exported(camera, records);
  const WipeAtEnd wipe(stream.camera.address.password);
  return ExportUserStream(stream, options.names);
}

ModelExport ExportAsked(const ExportOptions& options, const CameraRecord& camera, const std::string& configOption) {
  const Config config = StartPlatform(FindConfigFile(configOption));
  ExportedCamera exported = Exported(camera, Records(config.stateFolder));
  const WipeAtEnd wipe(exported.address.password);
  return ExportAskedCamera(camera.vendor, exported, options.names);
}

ModelExport ExportCamera(const ExportOptions& options, const std::string& configOption) {
  const CameraRecord camera = FindCamera(Records(StateFolder(configOption)), options.id);
  if (camera.vendor == kUserVendor) return ExportUser(options, configOption);
  if (IsGenericVendor(camera.vendor)) return ExportAsked(options, camera, configOption);
  throw std::runtime_error("the camera is of a model that a file knows: " + camera.vendor + " " + camera.model);
}

void Print(const ModelExport& exported) {
  for (const std::string& remark : exported.remarks) std::cerr << "recorderctl: " << EscapeControls(remark) << '\n';
  if (exported.text.empty()) throw CLI::RuntimeError(1);
  std::cout << exported.text;
}

}  // namespace

void AddModelsExport(CLI::App& modelsCommand, const std::string& configOption) {
  CLI::App* command = modelsCommand.add_subcommand("export", "Print what is known of a stored camera as a model file");
  const auto options = std::make_shared<ExportOptions>();
  AddId(*command, options->id);
  command->add_option("--vendor", options->names.vendor, "its maker (default: as an asked camera calls it)");
  command->add_option("--model", options->names.model, "its model (default: as an asked camera calls it)");
  command
      ->add_option("--codec", options->codec,
                   "of a camera of vendor User, which is tested with it (default: not known)")
      ->check([](const std::string& name) { return CodecOfName(name) ? "" : "no codec is called " + name; });
  command->footer(
      "Of a camera of vendor ONVIF or PSIA it is what the camera said when it was last asked. Without\n"
      "addresses, logins, tokens and serial numbers: what is left out is named. It can be handed on.\n"
      "Examples:\n"
      "  recorderctl models export 3 > acme.json\n"
      "  recorderctl models export 4 --vendor Acme --model X100 --codec H.264 > acme.json");
  command->callback([options, &configOption] { Print(ExportCamera(*options, configOption)); });
}

}  // namespace recorder
