#include "recorder/net/login/login.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace recorder {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

/// Realm of the challenge that is chosen, or "none".
std::string Chosen(const std::vector<std::string_view>& headers) {
  const std::vector<LoginChallenge> challenges = ParseChallenges(headers);
  const LoginChallenge* chosen = StrongestChallenge(challenges);
  return chosen == nullptr ? "none" : chosen->realm;
}

TEST(ChallengeTest, TheStrongestIsChosen) {
  const std::string basic = R"(Basic realm="b")";
  const std::string md5 = R"(Digest realm="m",nonce="n",qop="auth,auth-int")";
  const std::string sha256 = R"(Digest realm="s", nonce="n", algorithm="SHA-256")";
  const std::string unknown = R"(Digest realm="u", nonce="n", algorithm=SHA-512-256)";
  EXPECT_EQ(Chosen({basic}), "b");
  EXPECT_EQ(Chosen({basic, sha256, md5}), "s");
  EXPECT_EQ(Chosen({basic + ", " + md5 + ", " + sha256}), "s");
  EXPECT_EQ(Chosen({R"(Digest realm="a, Basic \"x\", b", nonce="n")"}), R"(a, Basic \"x\", b)");
  EXPECT_EQ(Chosen({unknown + ", " + md5}), "m");
  EXPECT_EQ(Chosen({R"(Negotiate abc==, Bearer, digest REALM = "m", nonce="n")"}), "m");
  EXPECT_EQ(Chosen({basic, unknown}), "none") << "a password is not sent in clear to a camera that knows Digest";
  EXPECT_EQ(Chosen({}), "none");
}

std::string Answer(const std::string& challenge, const std::string& user, const std::string& password) {
  return AuthorizationValue(ParseChallenges({challenge}).at(0), user, password, "GET", "/dir/index.html",
                            {"f2/wE4q74E6zIJEtWaHKaf5wv/H5QzzpXusqGemxURZJ", 1});
}

// Challenges and responses of RFC 7616 section 3.9.1, RFC 2069 section 2.4 with its erratum and RFC 7617 section 2.
TEST(LoginTest, AnswersAsTheStandardsDo) {
  const std::string rfc7616 =
      R"(Digest realm="http-auth@example.org", qop="auth, auth-int", )"
      R"(nonce="7ypf/xlj9XXwfDPEoM4URrv/xwf94BcCAzFZH4GiTo0v", opaque="FQhe/qaU925kfnzjCev0ciny7QMkPqMAFRtzCUYo5tdS")";
  EXPECT_THAT(Answer(rfc7616 + ", algorithm=MD5", "Mufasa", "Circle of Life"),
              AllOf(HasSubstr("response=\"8ca523f5e9506fed4657c9700eebdbec\", algorithm=MD5"),
                    HasSubstr("cnonce=\"f2/wE4q74E6zIJEtWaHKaf5wv/H5QzzpXusqGemxURZJ\", qop=auth, nc=00000001"),
                    HasSubstr("opaque=\"FQhe/qaU925kfnzjCev0ciny7QMkPqMAFRtzCUYo5tdS\"")));
  EXPECT_THAT(Answer(rfc7616 + ", algorithm=SHA-256", "Mufasa", "Circle of Life"),
              HasSubstr("\"753927fa0e85d155564e2e272a28d1802ca10daf4496794697cf8db5856cb6c1\", algorithm=SHA-256"));
  const std::string rfc2069 = R"(Digest realm="testrealm@host.com", nonce="dcd98b7102dd2f0e8b11d0f600bfb0c093")";
  EXPECT_THAT(Answer(rfc2069, "Mufasa", "CircleOfLife"),
              AllOf(HasSubstr("response=\"1949323746fe6a43ef61f9606e7febea\""), Not(HasSubstr("cnonce"))));
  EXPECT_EQ(Answer("Basic realm=\"WallyWorld\"", "Aladdin", "open sesame"), "Basic QWxhZGRpbjpvcGVuIHNlc2FtZQ==");
}

TEST(LoginTest, UserNameCannotLeaveItsQuotes) {
  EXPECT_THAT(Answer(R"(Digest realm="r", nonce="n")", "a\"\\\r\nX: y", "p"),
              HasSubstr("Digest username=\"a\\\"\\\\X: y\", realm=\"r\""));
}

}  // namespace
}  // namespace recorder
