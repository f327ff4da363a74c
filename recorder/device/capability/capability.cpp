#include <algorithm>
#include <list>
#include <memory>
#include <string>
#include <utility>

#include "platform/device.h"
#include "recorder/device/asked/camera_file.h"
#include "recorder/device/capability/capability_document.h"
#include "recorder/device/check/member_function.h"
#include "recorder/device/check/unasked.h"
#include "recorder/device/model/built_in_models.h"
#include "recorder/device/model/model_files.h"

using recorder::FindModel;
using recorder::IsGenericVendor;
using recorder::Model;
using recorder::ModelCodec;
using recorder::ReadCameraFile;
using recorder::Register;
using recorder::SnapshotSettings;

/// The model that is loaded, if any. Of the queries, an unloaded object answers as a model without anything would.
struct CamCapHandler::Impl : DPObjectBase {
  int LoadCapability(int source, std::string vendor, std::string name, std::string channel, std::string capFilePath);
  std::list<std::string> GetChannelList();
  std::string GetDefaultChannel();
  std::list<std::string> GetListForCodec(int codec);
  int GetDefaultVideoType();
  int GetStreamingTypeFor(int videoType);

  /// True for the built-in values of a camera that has to be asked first. `model` must be there.
  bool IsUnasked() const { return IsGenericVendor(model->vendor) && model->readAt == 0; }

  std::shared_ptr<const Model> model;
  std::string askedChannel;
};

// A model of a file is the same for all its channels; callers choose one by GetChannelList.
// NOLINTBEGIN(performance-unnecessary-value-param): the functor's signature has values
int CamCapHandler::Impl::LoadCapability(int source, std::string vendor, std::string name, std::string channel,
                                        std::string capFilePath) {
  model = nullptr;
  askedChannel = std::move(channel);
  if (source == DP_LOAD_FROM_MODEL_FILES) {
    model = IsGenericVendor(vendor) ? ReadCameraFile(vendor, capFilePath, askedChannel)
                                    : FindModel(vendor, name, capFilePath).model;
  }
  if (model) return 0;
  recorder::ReportUnasked(vendor, name, recorder::Outcome::kUnknownModel);
  recorder::RequestScope::Current().WorkFor({std::move(vendor), std::move(name), "", 0, ""});
  return -1;
}
// NOLINTEND(performance-unnecessary-value-param)

std::list<std::string> CamCapHandler::Impl::GetChannelList() {
  if (!model) return {};
  std::list<std::string> channels(model->channels.values.begin(), model->channels.values.end());
  // Whoever replaced the channel now would ask the camera about another one.
  const bool isListed = std::find(channels.begin(), channels.end(), askedChannel) != channels.end();
  const bool mayBeThere = IsUnasked() || model->hasOtherChannels;
  if (mayBeThere && !isListed && !askedChannel.empty()) channels.push_back(askedChannel);
  return channels;
}

/// Of a camera that was not asked yet: "", which the camera's own default stands for when it is contacted.
std::string CamCapHandler::Impl::GetDefaultChannel() { return model && !IsUnasked() ? model->channels.preset : ""; }

std::list<std::string> CamCapHandler::Impl::GetListForCodec(int codec) {
  if (!model) return {};
  const auto& all = model->snapshot.settings;
  const auto found = std::find_if(
      all.begin(), all.end(), [&](const SnapshotSettings& settings) { return GetVideoType(settings.codec) == codec; });
  if (found == all.end()) return {};
  return {found->values.begin(), found->values.end()};
}

int CamCapHandler::Impl::GetDefaultVideoType() { return model ? GetVideoType(model->presetCodec) : VIDEO_TYPE_ANY; }

int CamCapHandler::Impl::GetStreamingTypeFor(int videoType) {
  if (!model) return STREAMING_TYPE_ANY;
  const auto codec = std::find_if(model->codecs.begin(), model->codecs.end(), [&](const ModelCodec& candidate) {
    return GetVideoType(candidate.name) == videoType;
  });
  if (codec != model->codecs.end()) return GetStreamingType(codec->streamTypes.front());
  return model->codecs.empty() ? STREAMING_TYPE_RTSP : STREAMING_TYPE_ANY;
}

CamCapHandler::CamCapHandler() : impl(std::make_unique<Impl>()) {
  Register<&Impl::LoadCapability>(LoadCapability, impl.get(), "LoadCapability");
  Register<&Impl::GetChannelList>(GetChannelList, impl.get(), "GetChannelList");
  Register<&Impl::GetDefaultChannel>(GetDefaultChannel, impl.get(), "GetDefaultChannel");
  Register<&Impl::GetListForCodec>(GetListForCodec, impl.get(), "GetListForCodec");
  Register<&Impl::GetDefaultVideoType>(GetDefaultVideoType, impl.get(), "GetDefaultVideoType");
  Register<&Impl::GetStreamingTypeFor>(GetStreamingTypeFor, impl.get(), "GetStreamingTypeFor");
}

CamCapHandler::~CamCapHandler() = default;

// NOLINTNEXTLINE(performance-unnecessary-value-param): the platform's signature has values
int GetCamCap(std::string /*vendor*/, std::string /*model*/, CamCapHandler& handler, Json::Value& capability) {
  if (!handler.impl->model) return -1;
  capability = recorder::CapabilityDocument(handler.impl->model);
  return 0;
}
