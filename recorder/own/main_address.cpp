#include "recorder/own/main_address.h"

#include "recorder/device/asked/camera_file.h"
#include "recorder/device/model/built_in_models.h"
#include "recorder/device/model/model_stream.h"
#include "recorder/net/source_path.h"
#include "recorder/own/model_document.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

/// What is known of the camera; null for nothing.
std::shared_ptr<const Model> ModelOf(const CameraRecord& camera) {
  if (!IsGenericVendor(camera.vendor)) return FindModel(camera.vendor, camera.model).model;
  return ReadCameraFile(camera.vendor, KeptFile(camera.vendor, camera.host, camera.port), camera.channel);
}

/// A path says nothing of its protocol, but the port mostly does.
std::string SchemeOf(const std::string& path, const CameraAddress& address) {
  const bool isHttp = path.starts_with("http") || address.port == kHttpPort || address.port == kHttpsPort;
  return std::string(isHttp ? "http" : "rtsp") + (address.isTls || address.port == kHttpsPort ? "s" : "");
}

std::string TypedAddress(const CameraRecord& camera) {
  CameraAddress address{camera.host, camera.port, "", ""};
  std::string path = camera.sourcePath;
  if (path.empty() || TakeApart(path, address) != Outcome::kOk) return "";
  return SchemeOf(camera.sourcePath, address) + "://" + WithBrackets(address.host) + ":" +
         std::to_string(address.port) + (path.starts_with('/') ? "" : "/") + path;
}

}  // namespace

std::string MainAddress(const CameraRecord& camera) {
  const auto model = ModelOf(camera);
  if (!model || model->streams.empty()) return TypedAddress(camera);
  const ModelStream* main = FindModelStream(*model, kMainStream, "");
  const bool isKnown = main != nullptr && !main->from.path.empty();
  return isKnown ? StreamAddress(*model, *main, {camera.channel, camera.host, camera.port}) : "";
}

}  // namespace recorder
