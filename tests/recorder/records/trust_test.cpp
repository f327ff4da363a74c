#include "recorder/records/trust.h"

#include <gtest/gtest.h>

namespace recorder {
namespace {

constexpr std::int64_t kNow = 1'800'000'000;

SecretKey KeyOf(char digit) { return *SecretKey::FromHex(std::string(2 * SecretKey::kSize, digit)); }

/// Now, for a recorder that trusts the keys of 'a' and 'b'.
bool IsValid(const TrustPair& pair) { return IsPairValid(pair, {{"first", KeyOf('a')}, {"last", KeyOf('b')}}, kNow); }

TEST(TrustTest, APairIsValidForItsKeyAndTime) {
  EXPECT_TRUE(IsValid(MakePair(KeyOf('b'), kNow)));
  EXPECT_FALSE(IsValid(MakePair(KeyOf('c'), kNow)));
  EXPECT_TRUE(IsValid(MakePair(KeyOf('a'), kNow - 300)));
  EXPECT_FALSE(IsValid(MakePair(KeyOf('a'), kNow - 301))) << "too old";
  EXPECT_TRUE(IsValid(MakePair(KeyOf('a'), kNow + 30)));
  EXPECT_FALSE(IsValid(MakePair(KeyOf('a'), kNow + 31))) << "from the future";
  const auto [cookie, timestamp] = MakePair(KeyOf('a'), kNow);
  EXPECT_FALSE(IsPairValid({cookie, timestamp}, {}, kNow)) << "no key is trusted";
  EXPECT_FALSE(IsValid({cookie, std::to_string(kNow + 1)})) << "the time was changed";
  EXPECT_FALSE(IsValid({cookie, ""}));
  EXPECT_FALSE(IsValid({cookie.substr(0, 63) + (cookie.back() == '0' ? '1' : '0'), timestamp}));
  EXPECT_FALSE(IsValid({cookie + "0", timestamp}));
  EXPECT_FALSE(IsValid({"", timestamp}));
}

}  // namespace
}  // namespace recorder
