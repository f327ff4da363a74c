#include "recorder/access/guess_pauses.h"

#include <arpa/inet.h>
#include <sodium.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

using std::chrono::seconds;

constexpr seconds kLongestPause{60};
constexpr int kDoublings = 6;  // then a pause is longer than the longest
constexpr std::chrono::minutes kForgottenAfter{15};
constexpr std::size_t kNetworkBytes = 8;  // of an IPv6 address

/// What has failed for one user, or from one address.
struct Tally {
  int count = 0;
  Clock::time_point last;

  void Add(int failures, Clock::time_point at) {
    count += failures;
    last = std::max(last, at);
  }
  seconds Remaining(Clock::time_point now) const {
    if (count == 0) return seconds(0);
    const seconds pause = std::min(kLongestPause, seconds(1 << std::min(count - 1, kDoublings)));
    return std::chrono::ceil<seconds>(std::max(last + pause - now, Clock::duration::zero()));
  }
};

static_assert(crypto_shorthash_KEYBYTES == 16 && crypto_shorthash_BYTES == sizeof(std::uint64_t));

}  // namespace

GuessPauses::GuessPauses() { crypto_shorthash_keygen(key_.data()); }

seconds GuessPauses::Remaining(const std::string& user, const std::string& address, Clock::time_point now) const {
  Tally ofUser;
  Tally ofAddress;
  const std::uint64_t userHash = HashOf(user);
  const std::uint64_t addressHash = HashOfAddress(address);
  for (const Failures& row : failures_) {
    if (now - row.last >= kForgottenAfter) continue;
    if (row.user == userHash) ofUser.Add(row.count, row.last);
    if (row.address == addressHash) ofAddress.Add(row.count, row.last);
  }
  return std::max(ofUser.Remaining(now), ofAddress.Remaining(now));
}

void GuessPauses::AddFailure(const std::string& user, const std::string& address, Clock::time_point now) {
  MakeRoom(now);
  const Failures row{HashOf(user), HashOfAddress(address), 1, now};
  for (Failures& known : failures_) {
    if (known.user != row.user || known.address != row.address) continue;
    ++known.count;
    known.last = now;
    return;
  }
  failures_.push_back(row);
}

void GuessPauses::Forget(const std::string& user, const std::string& address) {
  std::erase_if(failures_, [userHash = HashOf(user), addressHash = HashOfAddress(address)](const Failures& row) {
    return row.user == userHash && row.address == addressHash;
  });
}

std::uint64_t GuessPauses::HashOf(const std::string& text) const {
  std::uint64_t hash = 0;
  crypto_shorthash(reinterpret_cast<unsigned char*>(&hash), reinterpret_cast<const unsigned char*>(text.data()),
                   text.size(), key_.data());
  return hash;
}

std::uint64_t GuessPauses::HashOfAddress(const std::string& address) const {
  in6_addr bytes{};
  if (inet_pton(AF_INET6, address.c_str(), &bytes) != 1) return HashOf(address);
  return HashOf(std::string(reinterpret_cast<const char*>(&bytes), kNetworkBytes));
}

void GuessPauses::MakeRoom(Clock::time_point now) {
  std::erase_if(failures_, [&](const Failures& row) { return now - row.last >= kForgottenAfter; });
  if (failures_.size() < kMostGuessers) return;
  failures_.erase(std::min_element(failures_.begin(), failures_.end(),
                                   [](const Failures& left, const Failures& right) { return left.last < right.last; }));
}

}  // namespace recorder
