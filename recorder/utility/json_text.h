#pragma once

#include <json/value.h>

#include <optional>
#include <string>
#include <string_view>

namespace recorder {

/// The object or array that `text` is in JSON, taken strictly: UTF-8, no comments, no trailing commas, no member twice,
/// nested 64 deep at most. Nothing when it is none; then `mistakes` says why, mostly in JsonCpp's pairs of lines:
/// "* Line 3, Column 5\n  What is wrong\n". Any thread.
std::optional<Json::Value> ParseStrictJson(std::string_view text, std::string& mistakes);

/// `json` on one line, in UTF-8: text as it is, but where some of it (a caller's or a camera's) is no UTF-8. Any
/// thread.
std::string ToText(const Json::Value& json);

/// The same on many lines, for people, with a line end.
std::string ToPrettyText(const Json::Value& json);

}  // namespace recorder
