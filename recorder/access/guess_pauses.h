#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "recorder/utility/clock.h"

namespace recorder {

/// Pauses after wrong passwords, for their user and for their address, whatever connection comes next: 1 s after the
/// first, twice as long after each further one, up to 60 s. What is 15 minutes old is forgotten. Of an IPv6 address the
/// first 64 bits count: one host has all others. One thread at a time.
class GuessPauses {
 public:
  GuessPauses();

  /// How long to wait before this user's password may be tried from this address; zero: now.
  std::chrono::seconds Remaining(const std::string& user, const std::string& address, Clock::time_point now) const;

  void AddFailure(const std::string& user, const std::string& address, Clock::time_point now);

  /// Forgets this user's failures from this address, since the right password came.
  void Forget(const std::string& user, const std::string& address);

 private:
  struct Failures {
    std::uint64_t user =
        0;  // names are kept by a keyed hash: it is short, and nobody can choose two that have the same
    std::uint64_t address = 0;
    int count = 0;
    Clock::time_point last;
  };
  std::uint64_t HashOf(const std::string& text) const;
  std::uint64_t HashOfAddress(const std::string& address) const;
  void MakeRoom(Clock::time_point now);

  std::array<unsigned char, 16> key_{};
  std::vector<Failures> failures_;  // one a pair of user and address
};

}  // namespace recorder
