#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

// Texts and plain values as the bytes that they lie in, without a copy.

namespace recorder {

inline std::span<const std::uint8_t> AsBytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

inline std::span<std::uint8_t> AsWritableBytes(std::string& text) {
  return {reinterpret_cast<std::uint8_t*>(text.data()), text.size()};
}

template <class T>
requires std::is_trivially_copyable_v<T> std::span<const std::uint8_t> BytesOf(const T& value) {
  return {reinterpret_cast<const std::uint8_t*>(&value), sizeof(value)};
}

template <class T>
requires std::is_trivially_copyable_v<T> std::span<std::uint8_t> WritableBytesOf(T& value) {
  return {reinterpret_cast<std::uint8_t*>(&value), sizeof(value)};
}

}  // namespace recorder
