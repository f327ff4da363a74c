#include "recorder/net/rtsp/rtsp_session.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "recorder/net/rtsp/steady_cameras.h"
#include "tests/recorder/rows.h"

// Orders of events that matter, one by one. tests/sessions makes up all others.

namespace recorder {
namespace {

// Parts of a script besides what a camera says; "" lasts until the session acts by itself.
const std::string kClosed = "closed";
const std::string kUnread = "unread";

/// A session with a camera that says one part of a script whenever it is waited for, then nothing more.
class RtspStory : private RtspLogins {
 public:
  /// `isSteady`: the camera is known to keep its connection open behind a challenge.
  RtspStory(std::vector<std::string> script, bool isSteady) : script_(std::move(script)), isSteady_(isSteady) {
    bool isGoing = Run(&RtspSession::Describe) && Run(&RtspSession::Setup) && Run(&RtspSession::Play);
    while (isGoing) isGoing = Run(&RtspSession::Read);
    told_ += NameOf(session_.Result());
  }

  /// A port where the session connects, with an "s" for TLS, a letter with the login's nonce and use where it sends,
  /// the outcome, "steady" when that is known of the camera now.
  std::string Told() const { return told_ + (isSteady_ ? " steady" : ""); }

 private:
  bool Run(void (RtspSession::*begin)()) {
    (session_.*begin)();
    for (;;) {
      switch (session_.Next(now_)) {
        case RtspSession::Step::kConnect:
          told_ += std::to_string(session_.Port()) + (session_.IsTls() ? "s " : " ");
          session_.Connected(Outcome::kOk);
          break;
        case RtspSession::Step::kSend:
          told_ += static_cast<char>(session_.Outgoing().front()) + std::exchange(login_, "") + ' ';
          session_.Sent(Outcome::kOk);
          break;
        case RtspSession::Step::kReceive:
          Hear(next_ == script_.size() ? "" : script_[next_++]);
          break;
        case RtspSession::Step::kOpenPorts:
          told_ += "ports ";
          session_.PortsOpened(5000);
          break;
        case RtspSession::Step::kDone:
          return session_.Result() == Outcome::kOk;
      }
    }
  }

  void Hear(const std::string& part) {
    if (part.empty()) now_ = session_.Until();
    if (part == kClosed) return session_.Ended(RtspSession::Ending::kUsual);
    if (part == kUnread) return session_.Ended(RtspSession::Ending::kUnread);
    std::copy(part.begin(), part.end(), session_.Space().begin());
    session_.Received(part.size());
  }

  bool HasLogin() const override { return true; }
  void Remember(const std::vector<LoginChallenge>& /*challenges*/) override {}
  bool MayLogIn(LoginMethod /*method*/) override { return true; }
  std::optional<std::string> Authorization(const LoginChallenge& challenge, std::string_view /*method*/,
                                           std::string_view /*uri*/, unsigned int use) override {
    return login_ = challenge.nonce + std::to_string(use);
  }
  void Worked(LoginMethod /*method*/) override {}
  bool IsSteady(int /*port*/) const override { return isSteady_; }
  void RememberSteady(int /*port*/, bool isSteady) override { isSteady_ = isSteady; }
  void AllowPort(int /*port*/) override {}

  const std::vector<std::string> script_;
  bool isSteady_;
  std::size_t next_ = 0;
  Clock::time_point now_;
  RtspSession session_{{"cam", 554, "/live", "test"}, Clock::time_point(std::chrono::seconds(70)), *this};
  std::string login_;
  std::string told_;
};

std::string Answer(const std::string& status, const std::string& rest = "\r\n") {
  return "RTSP/1.0 " + status + "\r\n" + rest;
}

const std::string kChallenge = Answer("401 No", "WWW-Authenticate: Digest realm=\"r\", nonce=\"n\"\r\n\r\n");
const std::string kStale = Answer("401 No", "WWW-Authenticate: Digest realm=\"r\", nonce=\"m\", stale=true\r\n\r\n");
const std::string kSdp =
    Answer("200 OK", "Content-Length: 51\r\n\r\nv=0\r\nm=video 0 RTP/AVP 96\r\na=rtpmap:96 H264/90000\r\n");
const std::string kGranted = Answer("200 OK", "Session: 7\r\nTransport: RTP/AVP/TCP;interleaved=4-5\r\n\r\n");
const std::string kGrantedUdp = Answer("200 OK", "Session: 7\r\nTransport: RTP/AVP;client_port=9-10\r\n\r\n");

struct SessionCase {
  const char* name;
  std::vector<std::string> script;
  const char* story;
  bool wasSteady = false;
};

const SessionCase kSessionCases[] = {
    {"OverUdpWithAQuestion",
     {kSdp, Answer("461 No"), kGrantedUdp, Answer("200 OK"), "OPTIONS * RTSP/1.0\r\nCSeq: 9\r\n\r\n"},
     "554 D S ports S P R O transportRefused"},
    {"UdpIsAnsweredToTcp", {kSdp, kGrantedUdp, kGrantedUdp, kClosed}, "554 D S ports S P notUnderstood"},
    {"WantsALoginForUdp",
     {kSdp, Answer("461 No"), kChallenge, kGrantedUdp, kClosed},
     "554 D S ports S Sn1 Pn2 notUnderstood steady"},
    {"TakesALogin", {kChallenge, "", kSdp, kClosed}, "554 D Dn1 Sn2 notUnderstood steady"},
    {"TakesOneAgainWithoutAWait", {kChallenge, kSdp, kClosed}, "554 D Dn1 Sn2 notUnderstood steady", true},
    {"WrongLogin", {kChallenge, "", kChallenge}, "554 D Dn1 loginRefused"},
    {"StaleNonce",
     {kChallenge, kStale, kSdp, kStale, kGranted, kClosed},
     "554 D Dn1 Dm1 Sm2 Sm1 Pm2 notUnderstood steady"},
    {"ClosedBehindChallenge", {kChallenge, kClosed, kStale, kSdp, kClosed}, "554 D 554 D Dm1 Sm2 notUnderstood steady"},
    {"ClosedBehindEachChallenge",
     {kChallenge, kClosed, kStale, kClosed, kSdp, kClosed},
     "554 D 554 D 554 Dm1 Sm2 notUnderstood"},
    {"ClosedLongAfterChallenge", {kChallenge, "", kUnread, kSdp, kClosed}, "554 D Dn1 554 Dn2 Sn3 notUnderstood"},
    {"ClosedUnreadAtLast", {kChallenge, kUnread, kSdp, kClosed}, "554 D Dn1 554 Dn2 Sn3 notUnderstood", true},
    {"ClosedOverLogin", {kChallenge, "", kClosed}, "554 D Dn1 loginRefused"},
    {"ClosedOverLoginAtLast", {kChallenge, kClosed}, "554 D Dn1 loginRefused", true},
    {"ClosedOverLoginTwice", {kChallenge, "", kUnread, kUnread}, "554 D Dn1 554 Dn2 loginRefused"},
    {"AlwaysStale", {kChallenge, kStale, kStale, kStale}, "554 D Dn1 Dm1 loginRefused"},
    {"AlwaysStaleAndClosed",
     {kChallenge, kStale, kClosed, kStale, kStale, kClosed, kStale},
     "554 D Dn1 554 D Dm1 554 Dm1 loginRefused"},
    {"Redirect",
     {kChallenge, Answer("302 Go", "Location: rtsp://CAM.:8554/b\r\n\r\n"), kClosed},
     "554 D Dn1 8554 D notUnderstood"},
    {"RedirectIntoTlsAndOut",
     {Answer("302 Go", "Location: rtsps://cam/b\r\n\r\n"), Answer("302 Go", "Location: rtsp://cam/c\r\n\r\n")},
     "554 D 322s D notUnderstood"},
};

class SessionTest : public testing::TestWithParam<SessionCase> {};

TEST_P(SessionTest, GoesAsTheCameraLeadsIt) {
  EXPECT_EQ(RtspStory(GetParam().script, GetParam().wasSteady).Told(), GetParam().story);
}

INSTANTIATE_TEST_SUITE_P(Rtsp, SessionTest, testing::ValuesIn(kSessionCases), kByName);

TEST(SteadyCamerasTest, AreBounded) {
  SteadyCameras cameras;
  for (int port = 1; port <= 1025; ++port) cameras.Add("cam", port);
  EXPECT_FALSE(cameras.Has("cam", 1));
  EXPECT_TRUE(cameras.Has("CAM.", 2));
  cameras.Remove("cam", 2);
  EXPECT_FALSE(cameras.Has("cam", 2));
}

}  // namespace
}  // namespace recorder
