#include "recorder/net/login.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace recorder {
namespace {

struct OfferCase {
  const char* name;
  std::vector<std::string_view> headers;
  LoginMethod chosen;  // kUnknown: none
  const char* realm;
};

const OfferCase kOfferCases[] = {
    {"Basic", {R"(Basic realm="cam")"}, LoginMethod::kBasic, "cam"},
    {"DigestWithoutAlgorithm", {R"(Digest realm="cam", nonce="n")"}, LoginMethod::kMd5, "cam"},
    {"StrongestOfSeveralLines",
     {R"(Basic realm="b")", R"(Digest realm="s",nonce="n",algorithm=SHA-256)", R"(Digest realm="m",nonce="n")"},
     LoginMethod::kSha256,
     "s"},
    {"StrongestOfOneLine",
     {R"(Basic realm="b", Digest realm="m", nonce="n", qop="auth,auth-int", Digest realm="s", nonce="n", algorithm="SHA-256")"},
     LoginMethod::kSha256,
     "s"},
    {"CommaAndQuoteInRealm",
     {R"(Digest realm="a, Basic \"x\", b", nonce="n")"},
     LoginMethod::kMd5,
     R"(a, Basic \"x\", b)"},
    {"UnknownAlgorithmFirst",
     {R"(Digest realm="u", nonce="n", algorithm=SHA-512-256, Digest realm="m", nonce="n", algorithm=MD5)"},
     LoginMethod::kMd5,
     "m"},
    {"UnknownSchemeFirst", {R"(Negotiate abc==, Bearer, digest REALM = "m", nonce="n")"}, LoginMethod::kMd5, "m"},
    {"NoBasicBesideUnknownDigest",
     {R"(Basic realm="b")", R"(Digest realm="u", nonce="n", algorithm=SHA-512-256)"},
     LoginMethod::kUnknown,
     ""},
    {"Nothing", {}, LoginMethod::kUnknown, ""},
};

class OfferTest : public testing::TestWithParam<OfferCase> {};

TEST_P(OfferTest, ChoosesTheStrongest) {
  const std::vector<LoginChallenge> challenges = ParseChallenges(GetParam().headers);
  const LoginChallenge* chosen = StrongestChallenge(challenges);
  ASSERT_EQ(chosen != nullptr, GetParam().chosen != LoginMethod::kUnknown);
  if (chosen == nullptr) return;
  EXPECT_EQ(chosen->method, GetParam().chosen);
  EXPECT_EQ(chosen->realm, GetParam().realm);
}

INSTANTIATE_TEST_SUITE_P(Offer, OfferTest, testing::ValuesIn(kOfferCases),
                         [](const auto& row) { return std::string(row.param.name); });

struct AnswerCase {
  const char* name;
  std::string_view challenge;
  const char* password;
  const char* clientNonce;
  std::vector<std::string_view> expected;
};

// Challenges and responses of RFC 7616 section 3.9.1, RFC 2617 section 3.5 and RFC 2069 section 2.4 with its erratum.
const AnswerCase kAnswerCases[] = {
    {"Md5Rfc7616",
     R"(Digest realm="http-auth@example.org", qop="auth, auth-int", algorithm=MD5, )"
     R"(nonce="7ypf/xlj9XXwfDPEoM4URrv/xwf94BcCAzFZH4GiTo0v", opaque="FQhe/qaU925kfnzjCev0ciny7QMkPqMAFRtzCUYo5tdS")",
     "Circle of Life",
     "f2/wE4q74E6zIJEtWaHKaf5wv/H5QzzpXusqGemxURZJ",
     {"Digest username=\"Mufasa\"", "response=\"8ca523f5e9506fed4657c9700eebdbec\"", "algorithm=MD5", "qop=auth,",
      "nc=00000001", "opaque=\"FQhe/qaU925kfnzjCev0ciny7QMkPqMAFRtzCUYo5tdS\""}},
    {"Sha256Rfc7616",
     R"(Digest realm="http-auth@example.org", qop="auth, auth-int", algorithm=SHA-256, )"
     R"(nonce="7ypf/xlj9XXwfDPEoM4URrv/xwf94BcCAzFZH4GiTo0v", opaque="FQhe/qaU925kfnzjCev0ciny7QMkPqMAFRtzCUYo5tdS")",
     "Circle of Life",
     "f2/wE4q74E6zIJEtWaHKaf5wv/H5QzzpXusqGemxURZJ",
     {"response=\"753927fa0e85d155564e2e272a28d1802ca10daf4496794697cf8db5856cb6c1\"", "algorithm=SHA-256"}},
    {"Md5Rfc2617",
     R"(Digest realm="testrealm@host.com", qop="auth,auth-int", nonce="dcd98b7102dd2f0e8b11d0f600bfb0c093")",
     "Circle Of Life",
     "0a4f113b",
     {"response=\"6629fae49393a05397450978507c4ef1\"", "cnonce=\"0a4f113b\""}},
    {"OldFormRfc2069",
     R"(Digest realm="testrealm@host.com", nonce="dcd98b7102dd2f0e8b11d0f600bfb0c093")",
     "CircleOfLife",
     "unused",
     {"response=\"1949323746fe6a43ef61f9606e7febea\""}},
    {"BasicRfc7617", R"(Basic realm="WallyWorld")", "open sesame", "", {"Basic TXVmYXNhOm9wZW4gc2VzYW1l"}},
};

class AnswerTest : public testing::TestWithParam<AnswerCase> {};

TEST_P(AnswerTest, IsTheStandardsOwn) {
  const AnswerCase& row = GetParam();
  const std::vector<LoginChallenge> challenges = ParseChallenges({row.challenge});
  ASSERT_EQ(challenges.size(), 1U);
  const std::string value =
      AuthorizationValue(challenges[0], "Mufasa", row.password, "GET", "/dir/index.html", {row.clientNonce, 1});
  for (const std::string_view part : row.expected) {
    EXPECT_NE(value.find(part), std::string::npos) << part << " in " << value;
  }
  EXPECT_EQ(value.find("cnonce") != std::string::npos, challenges[0].hasQop);
}

INSTANTIATE_TEST_SUITE_P(Answer, AnswerTest, testing::ValuesIn(kAnswerCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(LoginTest, UserNameCannotLeaveItsQuotes) {
  const std::vector<LoginChallenge> challenges = ParseChallenges({R"(Digest realm="r", nonce="n", stale=TRUE)"});
  EXPECT_TRUE(challenges.at(0).isStale);
  const std::string value =
      AuthorizationValue(challenges.at(0), "a\"\\\r\nX: y", "p", "DESCRIBE", "rtsp://h/", {"c", 1});
  EXPECT_TRUE(value.starts_with("Digest username=\"a\\\"\\\\X: y\", realm=\"r\"")) << value;
}

}  // namespace
}  // namespace recorder
