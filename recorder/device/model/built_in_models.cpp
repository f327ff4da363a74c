#include "recorder/device/model/built_in_models.h"

#include <algorithm>
#include <utility>

#include "platform/device.h"

namespace recorder {
namespace {

constexpr unsigned int kUnicastProtocols = 1U << RTSP_PROTOCOL_UDP | 1U << RTSP_PROTOCOL_TCP | 1U << RTSP_PROTOCOL_HTTP;

Model MakeUserModel() {
  Model model;
  model.vendor = kUserVendor;
  model.id = "User Define";
  model.channels.preset = "1";
  model.codecs = {{"MJPEG", {"HTTP"}}, {"H.264", {"RTSP"}}, {"MPEG4", {"RTSP"}}};
  model.streamCount = 0;
  model.rtspProtocols = kUnicastProtocols;
  model.presetRtspProtocol = RTSP_PROTOCOL_AUTO;
  return model;
}

Model MakeGenericModel(const std::string& vendor, const std::vector<std::string>& codecs) {
  Model model;
  model.vendor = vendor;
  model.name = kGenericName;
  model.id = vendor + " " + kGenericName;
  model.channels = {{"1"}, "1"};
  for (const std::string& codec : codecs) model.codecs.push_back({codec, {"RTSP"}});
  model.streamCount = 0;
  model.rtspProtocols = kUnicastProtocols;
  model.presetRtspProtocol = RTSP_PROTOCOL_AUTO;
  model.stream.emplace();
  return model;
}

}  // namespace

const std::vector<std::shared_ptr<const Model>>& BuiltInModels() {
  static const std::vector<std::shared_ptr<const Model>> models{
      std::make_shared<const Model>(MakeGenericModel(kOnvifVendor, {"H.264", "H.265", "MJPEG", "MPEG4"})),
      std::make_shared<const Model>(MakeGenericModel(kPsiaVendor, {"H.264", "MJPEG", "MPEG4"})),
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
