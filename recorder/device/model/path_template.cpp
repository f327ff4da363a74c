#include "recorder/device/model/path_template.h"

#include <algorithm>

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

}  // namespace

std::optional<std::string> FindPathMistake(std::string_view path, std::initializer_list<std::string_view> allowed) {
  if (!path.starts_with('/')) return "A path begins with '/'.";
  if (!std::all_of(path.begin(), path.end(), [](char c) { return c > ' ' && c < 0x7F && c != '#'; })) {
    return "A path holds neither blanks, '#', control characters nor anything but ASCII; percent-encode them.";
  }
  std::optional<std::string> mistake;
  const bool isClosed = Walk(
      path, [](std::string_view) {},
      [&](std::string_view name) {
        if (std::find(allowed.begin(), allowed.end(), name) == allowed.end()) {
          mistake = "Placeholder {" + std::string(name) + "} is not known here.";
        }
      });
  return isClosed ? mistake : "A brace has no partner.";
}

std::string FillPath(std::string_view path,
                     std::initializer_list<std::pair<std::string_view, std::string_view>> values) {
  std::string filled;
  Walk(
      path, [&](std::string_view text) { filled += text; },
      [&](std::string_view name) {
        for (const auto& [key, value] : values) {
          if (key == name) filled += PercentEncoded(value, kUnreservedSigns);
        }
      });
  return filled;
}

}  // namespace recorder
