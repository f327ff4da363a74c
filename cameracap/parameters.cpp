#include "cameracap/parameters.h"

#include <algorithm>

#include "platform/utility.h"

VendorAndModel SplitCameraModel(const std::string& cameraModel) {
  const std::size_t blank = cameraModel.find(' ');
  if (blank == std::string::npos) return {};
  return {cameraModel.substr(0, blank), cameraModel.substr(blank + 1)};
}

std::string ResolvePassword(const std::string& password, int camId, const std::string& vendor, const std::string& model,
                            const std::string& channel) {
  return password == gszFakePass ? GetCamRealPass(camId, vendor, model, channel) : password;
}

bool HasChannel(const std::list<std::string>& channels, const std::string& channel) {
  return std::find(channels.begin(), channels.end(), channel) != channels.end();
}
