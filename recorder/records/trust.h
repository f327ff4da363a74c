#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "recorder/records/records.h"
#include "recorder/utility/clock.h"

namespace recorder {

/// How long a pair is valid, and how far a client's clock may be ahead.
inline constexpr std::chrono::seconds kPairLifetime{300};
inline constexpr std::chrono::seconds kPairSkew{30};

/// What a client proves itself with: a time and its authentication code under the client's key.
struct TrustPair {
  std::string cookie;     ///< HMAC-SHA512-256 of the timestamp's text, 64 lower-case hexadecimal digits
  std::string timestamp;  ///< seconds since 1970-01-01 00:00 UTC, decimal
};

/// The pair for `key` at `seconds`.
TrustPair MakePair(const SecretKey& key, std::int64_t seconds = SecondsNow());

/// True when `timestamp` is a time that a pair valid at `seconds` may have.
bool IsTimely(const std::string& timestamp, std::int64_t seconds = SecondsNow());

/// True when `pair` was made with one of `keys` and is valid at `seconds`. The time it takes tells nothing about which
/// key or digit was wrong.
bool IsPairValid(const TrustPair& pair, const std::vector<TrustedKey>& keys, std::int64_t seconds = SecondsNow());

}  // namespace recorder
