#include "recorder/utility/trust.h"

#include <gtest/gtest.h>

#include "recorder/utility/config.h"
#include "tests/recorder/utility/temp_folder.h"

namespace recorder {
namespace {

constexpr std::int64_t kNow = 1'800'000'000;

SecretKey KeyOf(char digit) { return *SecretKey::FromHex(std::string(2 * SecretKey::kSize, digit)); }

struct PairCase {
  const char* name;
  TrustPair pair;
  bool valid;
};

TrustPair Changed(TrustPair pair, std::size_t place) {
  pair.cookie[place] = pair.cookie[place] == '0' ? '1' : '0';
  return pair;
}

TrustPair WithTimestamp(TrustPair pair, const std::string& timestamp) {
  pair.timestamp = timestamp;
  return pair;
}

const TrustPair kGood = MakePair(KeyOf('a'), kNow);

const PairCase kPairCases[] = {
    {"FirstKey", kGood, true},
    {"LastKey", MakePair(KeyOf('b'), kNow), true},
    {"OldestValid", MakePair(KeyOf('a'), kNow - 300), true},
    {"TooOld", MakePair(KeyOf('a'), kNow - 301), false},
    {"ClockABitAhead", MakePair(KeyOf('a'), kNow + 30), true},
    {"FromTheFuture", MakePair(KeyOf('a'), kNow + 31), false},
    {"UnknownKey", MakePair(KeyOf('c'), kNow), false},
    {"FirstDigitChanged", Changed(kGood, 0), false},
    {"LastDigitChanged", Changed(kGood, 63), false},
    {"TimestampMoved", WithTimestamp(kGood, std::to_string(kNow + 1)), false},
    {"TimestampWithTail", WithTimestamp(kGood, std::to_string(kNow) + " "), false},
    {"TimestampMissing", WithTimestamp(kGood, ""), false},
    {"TimestampOverflows", WithTimestamp(kGood, "99999999999999999999"), false},
    {"CookieMissing", {"", kGood.timestamp}, false},
    {"CookieDefault", {"cookie", kGood.timestamp}, false},
    {"CookieTooLong", {kGood.cookie + "0", kGood.timestamp}, false},
};

class TrustPairTest : public testing::TestWithParam<PairCase> {};

TEST_P(TrustPairTest, IsValidForItsKeyAndTime) {
  const std::vector<TrustedKey> keys{{"first", KeyOf('a')}, {"last", KeyOf('b')}};
  EXPECT_EQ(IsPairValid(GetParam().pair, keys, kNow), GetParam().valid);
  EXPECT_FALSE(IsPairValid(GetParam().pair, {}, kNow));
}

INSTANTIATE_TEST_SUITE_P(Pair, TrustPairTest, testing::ValuesIn(kPairCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(TrustTest, ClientsAndServerGroupAreToldApart) {
  const TempFolder folder;
  Config config;
  config.stateFolder = folder.Path();
  StartUtility(config);
  const SecretKey client = SecretKey::Random();
  const SecretKey group = SecretKey::Random();
  Records records{folder.Path()};
  EXPECT_TRUE(records.AddKey(TrustKind::kClient, "site", client));
  EXPECT_FALSE(records.AddKey(TrustKind::kClient, "site", group)) << "the name is taken";
  EXPECT_TRUE(records.AddKey(TrustKind::kServerGroup, "site", group));
  const TrustPair ofClient = MakePair(client);
  const TrustPair ofGroup = MakePair(group);
  EXPECT_TRUE(IsAuthPairMatch(ofClient.cookie, ofClient.timestamp));
  EXPECT_FALSE(IsAuthPairMatch(ofGroup.cookie, ofGroup.timestamp));
  EXPECT_TRUE(SlaveKdAuthentication().IsAuthByPairMatch(ofGroup.cookie, ofGroup.timestamp));
  EXPECT_FALSE(SlaveKdAuthentication().IsAuthByPairMatch(ofClient.cookie, ofClient.timestamp));
  EXPECT_TRUE(records.RemoveKey(TrustKind::kClient, "site"));
  EXPECT_FALSE(IsAuthPairMatch(ofClient.cookie, ofClient.timestamp));
}

}  // namespace
}  // namespace recorder
