#pragma once

#include <optional>
#include <string>
#include <vector>

// How a recorder with many channels makes its streams' paths: some are asked for, the others follow. Pure; any thread.

namespace recorder::find {

/// Which stream of a camera: all counted from 0.
struct StreamSpot {
  int channel = 0;
  int place = 0;      ///< among the channel's streams, the main one first
  std::string token;  ///< of its profile
};

struct KnownPath {
  StreamSpot spot;
  std::string path;
};

/// The path at `spot`, as `known` ones are made: either they hold their tokens, or their numbers grow from channel to
/// channel by the same steps. Nothing when they are made in no such way, each of `known` included. Needs the place's
/// path of channel 0 and, for the steps, the main stream's of channel 1.
std::optional<std::string> PathByPattern(const std::vector<KnownPath>& known, const StreamSpot& spot);

}  // namespace recorder::find
