#include <gtest/gtest.h>

#include <chrono>

#include "recorder/device/http_probe.h"
#include "recorder/media/jpeg_check.h"
#include "recorder/net/http_client.h"
#include "recorder/utility/request_scope.h"
#include "tests/recorder/device/canned_server.h"

namespace recorder {
namespace {

using namespace std::chrono_literals;
using Answers = std::vector<std::string>;

std::string Picture(const std::string& body) {
  return "HTTP/1.1 200 OK\r\nContent-Type: image/jpeg\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
         body;
}

std::string Status(const std::string& status, const std::string& header = "") {
  return "HTTP/1.1 " + status + "\r\n" + header + "Content-Length: 0\r\n\r\n";
}

std::string Wanted(const std::string& challenge) {
  return Status("401 Unauthorized", "WWW-Authenticate: " + challenge + "\r\n");
}

struct AnswerCase {
  const char* name;
  Answers answers;
  Outcome outcome;
  std::size_t requests;
};

const std::string kDigest = R"(Digest realm="r", nonce="n", qop="auth")";

const AnswerCase kAnswerCases[] = {
    {"Jpeg", {Picture(TinyJpeg())}, Outcome::kOk, 1},
    {"HalfJpeg", {Picture(TinyJpeg().substr(0, 20))}, Outcome::kNotUnderstood, 1},
    {"BodyCutShort", {Picture(TinyJpeg()).substr(0, 90)}, Outcome::kNotUnderstood, 1},
    {"HtmlPage", {"HTTP/1.1 200 OK\r\nContent-Type: text/html\r\n\r\n<html>"}, Outcome::kNotUnderstood, 1},
    {"HugeLength",
     {"HTTP/1.1 200 OK\r\nContent-Type: image/jpeg\r\nContent-Length: 99999999999\r\n\r\n"},
     Outcome::kNotUnderstood,
     1},
    {"Rtsp", {"RTSP/1.0 400 Bad Request\r\nCSeq: 0\r\n\r\n"}, Outcome::kNotThisProtocol, 1},
    {"Garbage", {std::string(200, '\x01')}, Outcome::kNotThisProtocol, 1},
    {"NotFound", {Status("404 Not Found")}, Outcome::kNoSuchStream, 1},
    {"Busy", {Status("503 Service Unavailable")}, Outcome::kBusy, 1},
    {"LoginTaken", {Wanted(kDigest), Picture(TinyJpeg())}, Outcome::kOk, 2},
    {"WrongPasswordIsOneTry", {Wanted(kDigest)}, Outcome::kLoginRefused, 2},
    {"StaleNonceIsTriedAgain",
     {Wanted(kDigest), Wanted(kDigest + ", stale=true"), Picture(TinyJpeg())},
     Outcome::kOk,
     3},
    {"StaleForEver", {Wanted(kDigest + ", stale=true")}, Outcome::kLoginRefused, 3},
    {"UnknownLoginIsNotTried", {Wanted("Bearer")}, Outcome::kLoginUnsupported, 1},
    {"UnknownDigestIsNotTried", {Wanted(kDigest + ", algorithm=SHA-512-256")}, Outcome::kLoginUnsupported, 1},
    {"RedirectHere", {Status("302 Found", "Location: /other\r\n"), Picture(TinyJpeg())}, Outcome::kOk, 2},
    {"RedirectElsewhere", {Status("302 Found", "Location: http://127.0.0.2/x\r\n")}, Outcome::kNotUnderstood, 1},
    {"RedirectForEver", {Status("302 Found", "Location: /loop\r\n")}, Outcome::kNotUnderstood, 4},
    {"FirstPartOfMany",
     {"HTTP/1.1 200 OK\r\nContent-Type: multipart/x-mixed-replace; boundary=b\r\n\r\n--b\r\n\r\n" + TinyJpeg() +
      "\r\n--b\r\n"},
     Outcome::kOk,
     1},
};

class AnswerTest : public testing::TestWithParam<AnswerCase> {};

TEST_P(AnswerTest, GivesTheOutcome) {
  const RequestScope scope(5s);
  CannedServer server(GetParam().answers);
  std::string jpeg;
  EXPECT_EQ(FetchPicture({"127.0.0.1", server.Port(), "user", "secret"}, "/p", jpeg), GetParam().outcome);
  EXPECT_EQ(jpeg, GetParam().outcome == Outcome::kOk ? TinyJpeg() : "");
  EXPECT_EQ(server.Requests().size(), GetParam().requests);
}

INSTANTIATE_TEST_SUITE_P(Answer, AnswerTest, testing::ValuesIn(kAnswerCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(HttpTest, SilentServerEndsAtTheDeadlineAndIsNotAskedAgain) {
  const RequestScope scope(300ms);
  const CannedServer server({"HTTP/1.1 200 OK\r\nContent-Type: multipart/x; boundary=b\r\n\r\n"});
  const FileDescriptor silent(socket(AF_INET, SOCK_STREAM, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof(address);
  ASSERT_EQ(bind(silent.Get(), reinterpret_cast<sockaddr*>(&address), length), 0);
  ASSERT_EQ(listen(silent.Get(), 1), 0);
  ASSERT_EQ(getsockname(silent.Get(), reinterpret_cast<sockaddr*>(&address), &length), 0);
  const CameraAddress camera{"127.0.0.1", ntohs(address.sin_port), "", ""};
  const auto start = Clock::now();
  EXPECT_EQ(ProbeHttpStream(camera, "/"), Outcome::kTimedOut);
  EXPECT_EQ(ProbeHttpStream(camera, "/"), Outcome::kTimedOut);
  EXPECT_LT(Clock::now() - start, 900ms);
}

TEST(HttpTest, PathAndHostCannotAddToTheRequest) {
  const RequestScope scope(5s);
  CannedServer server({Picture(TinyJpeg())});
  EXPECT_EQ(ProbeHttpStream({"127.0.0.1", server.Port(), "", ""}, "a/../b c?d=http://x@y#z"), Outcome::kOk);
  EXPECT_EQ(ProbeHttpStream({"127.0.0.1", server.Port(), "", ""}, "/a\r\nX: y"), Outcome::kNoSuchStream);
  EXPECT_EQ(ProbeHttpStream({"127.0.0.2:80/@127.0.0.1", server.Port(), "", ""}, "/"), Outcome::kUnreachable);
  const auto requests = server.Requests();
  ASSERT_EQ(requests.size(), 1U);
  EXPECT_TRUE(requests[0].starts_with("GET /a/../b%20c?d=http://x@y%23z HTTP/1.1\r\n")) << requests[0];
}

struct RedirectCase {
  const char* name;
  HttpPlace from;
  const char* location;
  std::optional<HttpPlace> target;
};

const RedirectCase kRedirectCases[] = {
    {"SameHost", {false, "cam", 80, "/"}, "http://CAM/x?y=1", HttpPlace{false, "cam", 80, "/x?y=1"}},
    {"OtherPort", {false, "cam", 80, "/"}, "http://cam:81/", HttpPlace{false, "cam", 81, "/"}},
    {"ToTls", {false, "cam", 80, "/"}, "https://cam/", HttpPlace{true, "cam", 443, "/"}},
    {"Ipv6", {false, "::1", 80, "/"}, "http://[::1]/a", HttpPlace{false, "::1", 80, "/a"}},
    {"FromTls", {true, "cam", 443, "/"}, "http://cam/", std::nullopt},
    {"OtherHost", {false, "cam", 80, "/"}, "http://cam.example/", std::nullopt},
    {"HostAsUser", {false, "cam", 80, "/"}, "http://cam@example/", std::nullopt},
    {"File", {false, "cam", 80, "/"}, "file://cam/etc/passwd", std::nullopt},
};

class RedirectTest : public testing::TestWithParam<RedirectCase> {};

TEST_P(RedirectTest, StaysAtTheCamera) {
  EXPECT_EQ(RedirectTarget(GetParam().from, GetParam().location), GetParam().target);
}

INSTANTIATE_TEST_SUITE_P(Redirect, RedirectTest, testing::ValuesIn(kRedirectCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(JpegCheckTest, EveryCutIsNoticed) {
  const std::string jpeg = TinyJpeg();
  EXPECT_TRUE(IsWholeJpeg(jpeg));
  EXPECT_TRUE(IsWholeJpeg(jpeg + "padding"));
  for (std::size_t length = 0; length < jpeg.size(); ++length) EXPECT_FALSE(IsWholeJpeg(jpeg.substr(0, length)));
}

}  // namespace
}  // namespace recorder
