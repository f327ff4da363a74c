#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

namespace recorder {

/// The value that stands beside `key` in `table`, or `fallback` when there is none.
template <class Key, class Value, std::size_t kRows>
constexpr Value Translate(const std::pair<Key, Value> (&table)[kRows], const std::type_identity_t<Key>& key,
                          std::type_identity_t<Value> fallback) {
  for (const auto& [candidate, value] : table) {
    if (candidate == key) return value;
  }
  return fallback;
}

}  // namespace recorder
