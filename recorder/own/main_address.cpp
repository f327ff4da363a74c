#include "recorder/own/main_address.h"

#include <algorithm>
#include <string_view>

#include "recorder/device/asked/camera_file.h"
#include "recorder/device/model/model_stream.h"
#include "recorder/net/source_path.h"
#include "recorder/own/model_document.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

constexpr std::string_view kHttpEndings[] = {".jpg", ".jpeg", ".mjpg", ".mjpeg", ".cgi"};

/// Whether a camera that speaks both may well be asked over HTTP: a path says nothing of its protocol.
bool IsUnsure(const std::string& path, int port) {
  const std::string name = LowerCase(path.substr(0, path.find('?')));
  const bool isPicture = std::ranges::any_of(kHttpEndings, [&](std::string_view end) { return name.ends_with(end); });
  return isPicture || port == kHttpPort || port == kHttpsPort;
}

std::string TypedAddress(const CameraRecord& camera) {
  CameraAddress address{camera.host, camera.port, "", ""};
  std::string path = camera.sourcePath;
  if (path.empty() || TakeApart(path, address) != Outcome::kOk) return "";
  const bool isWhole = path != camera.sourcePath;
  if (!isWhole && IsUnsure(path, address.port)) return "";
  const bool isHttp = isWhole && StartsWithIgnoreCase(Trimmed(camera.sourcePath), "http");
  return std::string(isHttp ? "http" : "rtsp") + (address.isTls ? "s" : "") + "://" + WithBrackets(address.host) + ":" +
         std::to_string(address.port) + (path.starts_with('/') ? "" : "/") + path;
}

}  // namespace

bool IsMainOverHttp(const CameraRecord& camera) {
  const std::string address = MainAddress(camera);
  return address.empty() ? IsUnsure(camera.sourcePath, camera.port) : address.starts_with("http");
}

std::string MainAddress(const CameraRecord& camera) {
  const auto model = KnownModel(camera);
  if (!model || model->streams.empty()) return TypedAddress(camera);
  const ModelStream* main = FindModelStream(*model, kMainStream, "");
  const bool isKnown = main != nullptr && !main->from.path.empty();
  return isKnown ? StreamAddress(*model, *main, {camera.channel, camera.host, camera.port}) : "";
}

}  // namespace recorder
