#pragma once

#include <optional>
#include <string_view>

// Whole addresses that stand in place of a path, such as "rtsp://camera:554/live". Pure functions, any thread.

namespace recorder {

/// What follows "scheme://"; nothing for a path, whose query may well hold such an address. A part of `path`.
std::optional<std::string_view> BehindScheme(std::string_view path);

/// True for a whole address with a user in front of its host.
bool HoldsLogin(std::string_view path);

}  // namespace recorder
