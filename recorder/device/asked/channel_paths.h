#pragma once

#include <optional>
#include <string>
#include <vector>

namespace recorder {

/// The path that a camera has for a channel.
struct ChannelPath {
  std::string channel;
  std::string path;
};

/// The one path, with placeholders of model files for the channel (see path_template.h), that all of `paths` are made
/// of; the path itself where all are the same. Nothing when they differ by more than the number of the channel: as it
/// is, of two digits, or counted from 0. `paths` holds one at least, of different channels. Pure.
std::optional<std::string> CommonPath(const std::vector<ChannelPath>& paths);

}  // namespace recorder
