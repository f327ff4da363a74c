#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "recorder/net/rtsp/steady_cameras.h"
#include "tests/recorder/net/rtsp_story.h"
#include "tests/recorder/rows.h"

namespace recorder {
namespace {

using namespace std::string_literals;

std::string Answer(const std::string& status, const std::string& rest = "\r\n") {
  return "RTSP/1.0 " + status + "\r\n" + rest;
}

const std::string kChallenge = Answer("401 No", "WWW-Authenticate: Digest realm=\"r\", nonce=\"n\"\r\n\r\n");
const std::string kStale = Answer("401 No", "WWW-Authenticate: Digest realm=\"r\", nonce=\"m\", stale=true\r\n\r\n");
const std::string kSdp =
    Answer("200 OK", "Content-Length: 51\r\n\r\nv=0\r\nm=video 0 RTP/AVP 96\r\na=rtpmap:96 H264/90000\r\n");
const std::string kGranted =
    Answer("200 OK", "Session: 7;timeout=60\r\nTransport: RTP/AVP/TCP;interleaved=4-5\r\n\r\n");
const std::string kGrantedUdp =
    Answer("200 OK", "Session: 7\r\nTransport: RTP/AVP;unicast;client_port=9-10;server_port=11\r\n\r\n");
const std::string kGrantedMulticast = Answer("200 OK", "Transport: RTP/AVP;multicast;port=5000-5001\r\n\r\n");
const std::string kOk = Answer("200 OK");
const std::string kPacket = "$\x04\x00\x0c\x80\x60\x00\x01"s + std::string(8, '\x11');

/// `script`, then 144,000 packets of one byte.
std::vector<std::string> Flooded(std::vector<std::string> script) {
  std::string packets;
  for (int i = 0; i < 12'000; ++i) packets += "$\x04\x00\x01\x80"s;
  script.insert(script.end(), 12, packets);
  return script;
}

struct SessionCase {
  const char* name;
  std::vector<std::string> script;
  const char* story;
};

const SessionCase kSessionCases[] = {
    {"KeptAlive", {kSdp, kGranted, kOk, kPacket}, "554 D S P 12 O O timedOut"},
    {"PacketsBeforePlayIsAnswered",
     {kSdp, kGranted, kPacket + kPacket + kOk + kPacket, kClosed},
     "554 D S P 12 12 12 notUnderstood"},
    {"TinyPacketsInsteadOfAnAnswer", Flooded({kSdp, kGranted}), "554 D S P notUnderstood"},
    {"QuestionInMidStream",
     {kSdp, kGranted, kOk, "OPTIONS * RTSP/1.0\r\nCSeq: 9\r\n\r\n" + kPacket, kClosed},
     "554 D S P R 12 notUnderstood"},
    {"OverUdp", {kSdp, Answer("461 No"), kGrantedUdp, kOk}, "554 D S ports S P O transportRefused"},
    {"UdpIsAnsweredToTcp", {kSdp, kGrantedUdp, kGrantedUdp, kClosed}, "554 D S ports S P notUnderstood"},
    {"MulticastIsAnsweredToUdp", {kSdp, Answer("406 No"), kGrantedMulticast}, "554 D S ports S transportRefused"},
    {"TcpIsAnsweredToUdp", {kSdp, Answer("500 No"), kGranted}, "554 D S ports S transportRefused"},
    {"RefusesUdpLikewise", {kSdp, Answer("461 No"), Answer("455 No")}, "554 D S ports S transportRefused"},
    {"RefusesUdpByClosing", {kSdp, Answer("461 No"), kClosed}, "554 D S ports S transportRefused"},
    {"IsTooBusyForUdp", {kSdp, Answer("461 No"), Answer("453 No")}, "554 D S ports S busy"},
    {"WantsALoginForUdp",
     {kSdp, Answer("461 No"), kChallenge, kGrantedUdp, kClosed},
     "554 D S ports S Sn1 Pn2 notUnderstood"},
    {"IsTooBusyForTcp", {kSdp, Answer("453 No")}, "554 D S busy"},
    {"Login", {kChallenge, kSdp, kGranted, kOk, kClosed}, "554 D Dn1 Sn2 Pn3 notUnderstood"},
    {"WrongLogin", {kChallenge, kChallenge}, "554 D Dn1 loginRefused"},
    {"StaleNonce", {kChallenge, kStale, kSdp, kStale, kGranted, kClosed}, "554 D Dn1 Dm1 Sm2 Sm1 Pm2 notUnderstood"},
    {"ClosedBehindChallenge", {kChallenge, kClosed, kStale, kSdp, kClosed}, "554 D 554 D Dm1 Sm2 notUnderstood"},
    {"ClosedBehindEachChallenge",
     {kChallenge, kClosed, kStale, kClosed, kSdp, kClosed},
     "554 D 554 D 554 Dm1 Sm2 notUnderstood"},
    {"ClosedLongAfterChallenge", {kChallenge, kQuiet, kUnread, kSdp, kClosed}, "554 D Dn1 554 Dn2 Sn3 notUnderstood"},
    {"ClosedOverLogin", {kChallenge, kQuiet, kClosed}, "554 D Dn1 loginRefused"},
    {"ClosedOverLoginTwice", {kChallenge, kQuiet, kUnread, kUnread}, "554 D Dn1 554 Dn2 loginRefused"},
    {"AlwaysStale", {kChallenge, kStale, kStale, kStale}, "554 D Dn1 Dm1 loginRefused"},
    {"AlwaysStaleAndClosed",
     {kChallenge, kStale, kClosed, kStale, kStale, kClosed, kStale},
     "554 D Dn1 554 D Dm1 554 Dm1 loginRefused"},
    {"OptionsFirst", {Answer("455 No"), kOk, kSdp, kClosed}, "554 D O D S notUnderstood"},
    {"OptionsClosed", {kChallenge, Answer("400 No"), kClosed}, "554 D Dn1 On2 notUnderstood"},
    {"OptionsInVain", {Answer("400 No"), kChallenge, kOk, Answer("400 No")}, "554 D O On1 Dn2 notUnderstood"},
    {"Redirect",
     {kChallenge, Answer("302 Go", "Location: rtsp://CAM.:8554/b\r\n\r\n"), kClosed},
     "554 D Dn1 8554 D notUnderstood"},
    {"RedirectIntoTlsAndOut",
     {Answer("302 Go", "Location: rtsps://cam/b\r\n\r\n"), Answer("302 Go", "Location: rtsp://cam/c\r\n\r\n")},
     "554 D 322s D notUnderstood"},
    {"RedirectElsewhere", {Answer("302 Go", "Location: rtsp://cam.example/live\r\n\r\n")}, "554 D notUnderstood"},
};

class SessionTest : public testing::TestWithParam<SessionCase> {};

TEST_P(SessionTest, GoesAsTheCameraLeadsIt) { EXPECT_EQ(RtspStory(GetParam().script).Told(), GetParam().story); }

INSTANTIATE_TEST_SUITE_P(Rtsp, SessionTest, testing::ValuesIn(kSessionCases), kByName);

struct SteadyCase {
  const char* name;
  bool wasKnown;
  std::vector<std::string> script;
  const char* story;
  bool isKnown;  ///< from then on
};

const SteadyCase kSteadyCases[] = {
    {"TakesALogin", false, {kChallenge, kQuiet, kSdp, kClosed}, "554 D Dn1 Sn2 notUnderstood", true},
    {"TakesOneAgainWithoutAWait", true, {kChallenge, kSdp, kClosed}, "554 D Dn1 Sn2 notUnderstood", true},
    {"ClosesAtLast", true, {kChallenge, kClosed}, "554 D Dn1 loginRefused", false},
    {"ClosesUnread", true, {kChallenge, kUnread, kSdp, kClosed}, "554 D Dn1 554 Dn2 Sn3 notUnderstood", false},
    {"ClosesBehindItsChallenge",
     false,
     {kChallenge, kClosed, kStale, kClosed, kSdp, kClosed},
     "554 D 554 D 554 Dm1 Sm2 notUnderstood",
     false},
    {"RefusesALogin", false, {kChallenge, kQuiet, kChallenge}, "554 D Dn1 loginRefused", false},
};

class SteadyTest : public testing::TestWithParam<SteadyCase> {};

TEST_P(SteadyTest, ALoginWaitsUntilTheCameraIsKnownToKeepItsConnection) {
  const RtspStory story(GetParam().script, GetParam().wasKnown);
  EXPECT_EQ(story.Told(), GetParam().story);
  EXPECT_EQ(story.IsSteady(), GetParam().isKnown);
}

INSTANTIATE_TEST_SUITE_P(Rtsp, SteadyTest, testing::ValuesIn(kSteadyCases), kByName);

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
