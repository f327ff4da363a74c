#include "recorder/device/model/built_in_models.h"

#include <algorithm>
#include <utility>

#include "platform/device.h"
#include "recorder/media/codecs.h"

namespace recorder {
namespace {

constexpr unsigned int kUnicastProtocols = 1U << RTSP_PROTOCOL_UDP | 1U << RTSP_PROTOCOL_TCP | 1U << RTSP_PROTOCOL_HTTP;

/// The codecs that the document of a built-in model names, and how each comes to the recorder.
std::vector<ModelCodec> CodecsOf(BuiltIn model) {
  std::vector<ModelCodec> codecs;
  for (const Codec& codec : Codecs()) {
    if ((codec.builtIns & model) != 0) codecs.push_back({std::string(codec.name), {"RTSP"}});
  }
  return codecs;
}

/// By a path that the user gives, a codec that comes over HTTP comes by nothing else, and is named first.
std::vector<ModelCodec> CodecsOfUser() {
  std::vector<ModelCodec> codecs = CodecsOf(kUserBuiltIn);
  const auto isOverHttp = [](const ModelCodec& codec) { return CodecOfName(codec.name)->isOverHttp; };
  const auto rest = std::stable_partition(codecs.begin(), codecs.end(), isOverHttp);
  std::for_each(codecs.begin(), rest, [](ModelCodec& codec) { codec.streamTypes = {"HTTP"}; });
  return codecs;
}

Model MakeUserModel() {
  Model model;
  model.vendor = kUserVendor;
  model.id = "User Define";
  model.channels.preset = "1";
  model.codecs = CodecsOfUser();
  model.streamCount = 0;
  model.rtspProtocols = kUnicastProtocols;
  model.presetRtspProtocol = RTSP_PROTOCOL_AUTO;
  return model;
}

Model MakeGenericModel(const std::string& vendor, BuiltIn codecs) {
  Model model;
  model.vendor = vendor;
  model.name = kGenericName;
  model.id = vendor + " " + kGenericName;
  model.channels = {{"1"}, "1"};
  model.codecs = CodecsOf(codecs);
  model.streamCount = 0;
  model.rtspProtocols = kUnicastProtocols;
  model.presetRtspProtocol = RTSP_PROTOCOL_AUTO;
  model.streams.emplace_back();
  return model;
}

}  // namespace

const std::vector<std::shared_ptr<const Model>>& BuiltInModels() {
  static const std::vector<std::shared_ptr<const Model>> models{
      std::make_shared<const Model>(MakeGenericModel(kOnvifVendor, kOnvifBuiltIn)),
      std::make_shared<const Model>(MakeGenericModel(kPsiaVendor, kPsiaBuiltIn)),
      std::make_shared<const Model>(MakeUserModel()),
  };
  return models;
}

std::shared_ptr<const Model> BuiltInModel(const std::string& vendor) {
  const auto& models = BuiltInModels();
  const auto found = std::find_if(models.begin(), models.end(), [&](const auto& m) { return m->vendor == vendor; });
  return found == models.end() ? nullptr : *found;
}

bool IsGenericVendor(const std::string& vendor) { return vendor == kOnvifVendor || vendor == kPsiaVendor; }

}  // namespace recorder
