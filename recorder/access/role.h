#pragma once

#include <optional>
#include <string_view>

namespace recorder {

/// What a user may do: a user tests, lists and pictures cameras; an admin stores and changes them and manages users as
/// well.
enum class Role { kUser, kAdmin };

/// As files and answers have it: "user" or "admin".
inline std::string_view NameOf(Role role) { return role == Role::kAdmin ? "admin" : "user"; }

inline std::optional<Role> ParseRole(std::string_view name) {
  if (name == NameOf(Role::kAdmin)) return Role::kAdmin;
  return name == NameOf(Role::kUser) ? std::optional(Role::kUser) : std::nullopt;
}

}  // namespace recorder
