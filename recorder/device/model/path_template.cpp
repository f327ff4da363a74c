#include "recorder/device/model/path_template.h"

#include <algorithm>
#include <charconv>
#include <iterator>

#include "recorder/net/percent.h"

namespace recorder {
namespace {

/// Calls `text` for each stretch of plain text and `placeholder` for each name between braces. False when a brace has
/// no partner.
template <class OnText, class OnPlaceholder>
bool Walk(std::string_view path, OnText text, OnPlaceholder placeholder) {
  while (!path.empty()) {
    const std::size_t brace = std::min(path.find_first_of("{}"), path.size());
    text(path.substr(0, brace));
    path.remove_prefix(brace);
    if (path.empty()) return true;
    const std::size_t end = path.find('}');
    if (path.front() != '{' || end == std::string_view::npos) return false;
    placeholder(path.substr(1, end - 1));
    path.remove_prefix(end + 1);
  }
  return true;
}

// --- Placeholders ---------------------------------------------------------------------------------------------------

/// The number of a channel that is counted from 1; none for any other text.
std::optional<int> CountedChannel(std::string_view channel) {
  int number = 0;
  const char* end = channel.data() + channel.size();
  const auto [rest, error] = std::from_chars(channel.data(), end, number);
  const bool isCounted = error == std::errc() && rest == end && number > 0;
  return isCounted ? std::optional(number) : std::nullopt;
}

std::string ChannelFrom0(const PathValues& values) {
  const auto number = CountedChannel(values.channel);
  return number ? std::to_string(*number - 1) : std::string(values.channel);
}

std::string ChannelOfTwoDigits(const PathValues& values) {
  constexpr int kFirstOfTwoDigits = 10;
  const auto number = CountedChannel(values.channel);
  if (!number) return std::string(values.channel);
  return (*number < kFirstOfTwoDigits ? "0" : "") + std::to_string(*number);
}

struct Placeholder {
  std::string_view name;
  bool isOfStream;
  bool isOfSnapshot;
  std::string (*value)(const PathValues& values);
};

constexpr Placeholder kPlaceholders[] = {
    {"channel", true, true, [](const PathValues& values) { return std::string(values.channel); }},
    {"channel0", true, true, ChannelFrom0},
    {"channel:02", true, true, ChannelOfTwoDigits},
    {"stream", true, false, [](const PathValues& values) { return std::to_string(values.stream + 1); }},
    {"stream0", true, false, [](const PathValues& values) { return std::to_string(values.stream); }},
    {"setting", false, true, [](const PathValues& values) { return std::string(values.setting); }},
};

/// Null when there is none of this name.
const Placeholder* FindPlaceholder(std::string_view name) {
  const auto* found =
      std::find_if(std::begin(kPlaceholders), std::end(kPlaceholders), [&](const auto& p) { return p.name == name; });
  return found == std::end(kPlaceholders) ? nullptr : found;
}

bool IsKnown(std::string_view name, PathKind kind) {
  const Placeholder* found = FindPlaceholder(name);
  return found != nullptr && (kind == PathKind::kStream ? found->isOfStream : found->isOfSnapshot);
}

}  // namespace

std::optional<std::string> FindPathMistake(std::string_view path, PathKind kind) {
  if (!path.starts_with('/')) return "A path begins with '/'.";
  if (!std::all_of(path.begin(), path.end(), [](char c) { return c > ' ' && c < 0x7F && c != '#'; })) {
    return "A path holds neither blanks, '#', control characters nor anything but ASCII; percent-encode them.";
  }
  std::optional<std::string> mistake;
  const bool isClosed = Walk(
      path, [](std::string_view) {},
      [&](std::string_view name) {
        if (!IsKnown(name, kind)) mistake = "Placeholder {" + std::string(name) + "} is not known here.";
      });
  return isClosed ? mistake : "A brace has no partner.";
}

std::string FillPath(std::string_view path, const PathValues& values) {
  std::string filled;
  Walk(
      path, [&](std::string_view text) { filled += text; },
      [&](std::string_view name) {
        if (const Placeholder* known = FindPlaceholder(name)) {
          filled += PercentEncoded(known->value(values), kUnreservedSigns);
        }
      });
  return filled;
}

}  // namespace recorder
