#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

// Paths of model files, with placeholders such as "/ch{channel}/stream{stream}".

namespace recorder {

/// What is wrong with a path of a model file that may use the placeholders `allowed`; nothing when it is right.
std::optional<std::string> FindPathMistake(std::string_view path, std::initializer_list<std::string_view> allowed);

/// Replaces each placeholder of `path` by its value, percent-encoded but for unreserved characters (RFC 3986 section
/// 2.3), so that a value never changes the path around it.
std::string FillPath(std::string_view path,
                     std::initializer_list<std::pair<std::string_view, std::string_view>> values);

}  // namespace recorder
