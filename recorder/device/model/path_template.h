#pragma once

#include <optional>
#include <string>
#include <string_view>

// Paths of model files, with placeholders such as "/ch{channel}/stream{stream}".

namespace recorder {

/// What a path leads to: pictures have settings, streams have numbers.
enum class PathKind { kStream, kSnapshot };

/// What is wrong with a path of a model file; nothing when it is right.
std::optional<std::string> FindPathMistake(std::string_view path, PathKind kind);

/// What stands for the placeholders of a path.
struct PathValues {
  std::string_view channel;  ///< "1" is the first one for cameras that count; other texts stand as they are
  int stream = 0;            ///< from 0
  std::string_view setting = {};
};

/// Replaces each placeholder of `path` by its value, percent-encoded but for unreserved characters (RFC 3986 section
/// 2.3), so that a value never changes the path around it.
std::string FillPath(std::string_view path, const PathValues& values);

}  // namespace recorder
