#include "recorder/own/entity_tag.h"

#include <algorithm>
#include <functional>

#include "recorder/utility/text.h"

namespace recorder {

namespace {

constexpr std::string_view kWeak = "W/";

/// Whether a list of tags is "*" or has one for which `isIt`.
template <class Condition>
bool HasTag(std::string_view list, Condition isIt) {
  const auto tags = Split(list, ',');
  return Trimmed(list) == "*" || std::ranges::any_of(tags, [&](std::string_view tag) { return isIt(Trimmed(tag)); });
}

}  // namespace

std::string TagOf(std::string_view text) { return '"' + std::to_string(std::hash<std::string_view>{}(text)) + '"'; }

std::string TagOf(int revision) { return '"' + std::to_string(revision) + '"'; }

std::string TagLine(const std::string& tag) { return "ETag: " + tag + "\r\n"; }

bool IsNoneMatch(const std::string& tag, std::string_view ifNoneMatch) {
  return HasTag(ifNoneMatch,
                [&](std::string_view one) { return one.substr(one.starts_with(kWeak) ? kWeak.size() : 0) == tag; });
}

bool IsMatch(const std::string& tag, std::string_view ifMatch) {
  return HasTag(ifMatch, [&](std::string_view one) { return one == tag; });
}

}  // namespace recorder
