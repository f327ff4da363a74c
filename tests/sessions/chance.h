#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace sessions {

/// Choices, all made by one seed, or by bytes that a fuzzer changes. The first choice is the usual one: behind the end
/// of given bytes there are no others.
class Chance {
 public:
  explicit Chance(std::uint64_t seed) : state_(seed * 0xd1342543de82ef95) {}
  explicit Chance(std::string_view bytes) : bytes_(bytes), isGiven_(true) {}

  /// 0 to count - 1.
  std::size_t Below(std::size_t count) { return count < 2 ? 0 : static_cast<std::size_t>(Next(count) % count); }
  bool OneIn(std::size_t count) { return Below(count) == count - 1; }
  template <class T>
  const T& Of(const std::vector<T>& choices) {
    return choices[Below(choices.size())];
  }
  /// The first one more often than not.
  template <class T>
  const T& Mostly(const std::vector<T>& choices) {
    return OneIn(4) ? Of(choices) : choices.front();
  }

 private:
  static constexpr std::uint64_t kSpread = 0x9e3779b97f4a7c15;  // of SplitMix64

  std::uint64_t Next(std::size_t count) {
    if (isGiven_) return count > 256 ? Byte() << 8 | Byte() : Byte();
    std::uint64_t mixed = state_ += kSpread;
    mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9;
    mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111eb;
    return mixed ^ (mixed >> 31);
  }

  std::uint64_t Byte() {
    if (bytes_.empty()) return 0;
    const auto byte = static_cast<unsigned char>(bytes_.front());
    bytes_.remove_prefix(1);
    return byte;
  }

  std::uint64_t state_ = 0;
  std::string_view bytes_;
  bool isGiven_ = false;
};

}  // namespace sessions
