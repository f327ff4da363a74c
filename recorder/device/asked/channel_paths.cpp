#include "recorder/device/asked/channel_paths.h"

#include <algorithm>
#include <string_view>

#include "recorder/device/model/path_template.h"

namespace recorder {
namespace {

constexpr std::string_view kChannelPlaceholders[] = {"{channel}", "{channel:02}", "{channel0}"};

using Parts = std::vector<std::string_view>;

/// Numbers and what stands between them, in turns.
Parts PartsOf(std::string_view path) {
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  Parts parts;
  while (!path.empty()) {
    const bool isNumber = isDigit(path.front());
    const auto* const end = std::find_if(path.begin(), path.end(), [&](char c) { return isDigit(c) != isNumber; });
    parts.push_back(path.substr(0, static_cast<std::size_t>(end - path.begin())));
    path.remove_prefix(parts.back().size());
  }
  return parts;
}

/// What can stand for the parts at `index`: the text that they share, or a placeholder; "" for neither.
std::string_view CommonPart(const std::vector<ChannelPath>& paths, const std::vector<Parts>& parts, std::size_t index) {
  const std::string_view first = parts.front()[index];
  const bool isShared = std::all_of(parts.begin(), parts.end(), [&](const Parts& p) { return p[index] == first; });
  if (isShared) return first;
  for (const std::string_view placeholder : kChannelPlaceholders) {
    bool fits = true;
    for (std::size_t i = 0; i < paths.size(); ++i) {
      fits = fits && FillPath(placeholder, {.channel = paths[i].channel}) == parts[i][index];
    }
    if (fits) return placeholder;
  }
  return "";
}

}  // namespace

std::optional<std::string> CommonPath(const std::vector<ChannelPath>& paths) {
  std::vector<Parts> parts(paths.size());
  std::transform(paths.begin(), paths.end(), parts.begin(), [](const ChannelPath& path) { return PartsOf(path.path); });
  const std::size_t count = parts.front().size();
  const bool isAlike = std::all_of(parts.begin(), parts.end(), [&](const Parts& p) { return p.size() == count; });
  if (!isAlike) return std::nullopt;
  std::string common;
  for (std::size_t i = 0; i < count; ++i) {
    const std::string_view part = CommonPart(paths, parts, i);
    if (part.empty()) return std::nullopt;
    common += part;
  }
  return common;
}

}  // namespace recorder
