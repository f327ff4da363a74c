#pragma once

#include <string>

/// Names each test after its row's member `name`.
inline constexpr auto kByName = [](const auto& row) { return std::string(row.param.name); };

/// `text` with the first `from`, which it must hold, replaced: a good file made into one with a mistake.
inline std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  return text.replace(text.find(from), from.size(), to);
}
