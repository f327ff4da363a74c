#include "cameracap/keyframe.h"

#include <array>
#include <climits>
#include <sstream>

#include "tests/cameracap/request.h"

namespace {

// --- Presentation times ---------------------------------------------------------------------------------------------

using At = std::array<std::int64_t, 4>;  // seconds, microseconds, now, expected time
struct SmootherRow {
  const char* name;
  int formatType;
  std::vector<At> steps;
};
SmootherRow Clock(const char* name, int type, std::vector<At> steps) { return {name, type, std::move(steps)}; }
const SmootherRow kSmootherRows[] = {
    // 1: a jump by a mean of 0, reset to now. 2: mean 40,000. 3: mean (60,000 + 40,000) / 2. 4: a jump, so the mean.
    // 5: 200,000 back is no jump. 6: nor are 199,999; mean 124,999. 7: 200,001 is a jump; 200,000 from now is near
    // enough. 8: 200,001 is not.
    Clock("CameraClock", 0,
          {At{1000, 0, 5'000'000, 5'000'000}, At{1000, 40'000, 5'040'000, 5'040'000},
           At{1000, 100'000, 5'100'000, 5'100'000}, At{1000, 400'000, 5'300'000, 5'150'000},
           At{1000, 200'000, 5'150'000, 4'950'000}, At{1000, 399'999, 5'100'000, 5'149'999},
           At{1000, 600'000, 5'474'998, 5'274'998}, At{1000, 600'000, 5'474'999, 5'474'999}}),
    // 2: backward mean -2. 3: (-5 - 2) >> 1 = -4. 4: a jump back by it. 5: 50,000 is no jump; forward mean 50,000.
    // 6: 50,001 is one. 7: mean 25,000. 8: a jump by it; 50,000 from now is near enough. 9: 50,001 is not.
    Clock("LocalClock", 1,
          {At{100, 0, 1'000'000, 1'000'000}, At{99, 999'998, 1'000'000, 999'998}, At{99, 999'993, 1'000'000, 999'993},
           At{99, 900'000, 1'000'000, 999'989}, At{99, 950'000, 1'000'000, 1'049'989}, At{100, 1, 1'060'000, 1'099'989},
           At{100, 1, 1'060'000, 1'099'989}, At{200, 0, 1'074'989, 1'124'989}, At{200, 0, 1'074'988, 1'074'988}}),
    // 2: 150,000 is no jump.
    Clock("OtherTypesAsCameraClock", 2, {At{1000, 0, 5'000'000, 5'000'000}, At{1000, 150'000, 5'000'000, 5'150'000}}),
    // 2: mean 3, which jumps leave alone. 4: mean (4 + 3) / 2 = 3. 6: the backward mean is still 0.
    Clock("JumpsDoNotMoveTheMeans", 1,
          {At{1000, 0, 5'000'000, 5'000'000}, At{1000, 3, 5'000'000, 5'000'003}, At{2000, 0, 5'000'000, 5'000'006},
           At{2000, 4, 5'000'000, 5'000'010}, At{3000, 0, 5'000'000, 5'000'013}, At{1000, 0, 5'000'000, 5'000'013}}),
    // 1: 2^56 - 10. 2: far back, not 10 on.
    Clock("FiftySixBits", 0,
          {At{-1, 999'990, 5'000'000, 5'000'000}, At{0, 0, 5'000'000, 5'000'000}, At{0, 7, 5'000'000, 5'000'007}}),
    // 2: 2^56 + 17, so 10 on; mean (10 + 7) / 2 = 8. 3: 2^55 + 17, a jump.
    Clock("BeyondFiftySixBits", 0,
          {At{0, 7, 5'000'000, 5'000'000}, At{72'057'594'037, 927'953, 5'000'000, 5'000'010},
           At{36'028'797'018, 963'985, 5'000'000, 5'000'018}}),
    // 2: across 2^31.
    Clock("Past31Bits", 0, {At{2147, 483'640, 5'000'000, 5'000'000}, At{2147, 483'650, 5'000'000, 5'000'010}}),
    // 1: 70,000 from the start values: no jump, near enough.
    Clock("StartNearZero", 0, {At{0, 70'000, 100'000, 70'000}}),
};

struct SmootherTest : testing::TestWithParam<SmootherRow> {};
TEST_P(SmootherTest, Steps) {
  PtsSmoother smoother;
  for (const auto& [seconds, microseconds, now, pts] : GetParam().steps) {
    if (static_cast<time_t>(seconds) != seconds) GTEST_SKIP() << "no such time on this machine";
    timeval captureTime{};
    captureTime.tv_sec = static_cast<time_t>(seconds);
    captureTime.tv_usec = static_cast<suseconds_t>(microseconds);
    EXPECT_EQ(smoother.Step(GetParam().formatType, captureTime, now), pts) << microseconds;
  }
}
INSTANTIATE_TEST_SUITE_P(Clock, SmootherTest, testing::ValuesIn(kSmootherRows), kByName);

// --- The grab -------------------------------------------------------------------------------------------------------

/// Grabs, and returns result, size and picture.
std::string Grab() {
  unsigned char before = 0;
  unsigned char* jpeg = &before;
  int size = 77;
  const int result = GetImgByRTP("10.0.0.9", 554, "root", "pw", "/live", &jpeg, &size, 3, 7);
  if (jpeg == &before) return "slots not cleared";
  const std::string picture = Compact(Bytes(jpeg, size));
  std::free(jpeg);
  return std::to_string(result) + " " + std::to_string(size) + " " + picture + "\n";
}

/// What follows `start` on the transcript's lines that begin so.
std::vector<std::string> Tails(const std::string& start) {
  std::vector<std::string> tails;
  std::istringstream lines{Transcript()};
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind(start, 0) == 0) tails.push_back(line.substr(start.size()));
  }
  return tails;
}

const std::string kOpening = R"(
  RtpFetch("10.0.0.9",554,"/live","root","pw",false,"",2,4,0,"",""); MP4Stream(1,7); NextPartInfo(false,0)
  )";
const std::string kFormat = R"(GetVideoFormat(1); Init(0,1748121140,"cfg"); )";
const std::string kFeed = R"(GetImgContentInfo(); GetCurTimestamp(); MediaUnit #1(7); #1.SetPTS(5000000)
  #1.SetDTS(5000000); #1.SetTimestamp(5000000); FetchContent(3); Packetize("\u0000\u0000\u0000\u0001abc"); ~MediaUnit #1
  )";
const std::string kKey = kOpening + kFormat + kFeed + R"(MediaUnit #2(3); Packetize(""); )";
const std::string kDecode = R"(DoFFMpegGetJpeg(3,"cfg","key"); )";
const std::string kClosing = "~MP4Stream; ~RtpFetch";
const std::string kNoFrame =
    R"(log("cameracap:181","DecodeGetJpeg","Failed to get i frame image.\n"); ~MediaUnit #2; )";
const std::string kNoPart = R"(log("cameracap:221","GetImgByRTP","Get rtp header failed.\n"); )";
const std::string kNoPacketizer = R"(log("cameracap:230","GetImgByRTP","Failed to create vdo stream Packetizer.\n"); )";
/// Of a codec whose parts get no start code.
const std::string kAsItComes = R"(GetImgContentInfo(); GetCurTimestamp(); MediaUnit #1(3); #1.SetPTS(5000000)
  #1.SetDTS(5000000); #1.SetTimestamp(5000000); FetchContent(3); Packetize("abc"); ~MediaUnit #1
  MediaUnit #2(3); Packetize(""); DoFFMpegGetJpeg(3,"cfg","key"); ~MediaUnit #2; ~MP4Stream; ~RtpFetch)";
const std::vector<Row> kGrabRows = {
    Row("KeyFrame", {}, R"(0 7 "decoded"; )" + kKey + kDecode + "~MediaUnit #2; " + kClosing),
    Row("OtherCodec", {{"GetVideoFormat", List(0, 1, 0x6d703476, "cfg")}},
        R"(0 7 "decoded"; )" + kOpening + R"(GetVideoFormat(1); Init(1,1836070006,"cfg"); )" + kAsItComes),
    Row("H265PartsAsTheyCome", {{"GetVideoFormat", List(0, 0, kCodecH265, "cfg")}},
        R"(0 7 "decoded"; )" + kOpening + R"(GetVideoFormat(1); Init(0,1748121141,"cfg"); )" + kAsItComes),
    Row("NoPart", {{"NextPartInfo", 5}}, "-1 0 null; " + kOpening + kNoPart + kClosing),
    Row("NoPacketizer", {{"Init", List(0, false)}}, "-1 0 null; " + kOpening + kFormat + kNoPacketizer + kClosing),
    Row("NoFrame", {{"Packetize", List(List(2, "<null>"))}},
        "-1 0 null; " + Swap(kKey, "#2(3)", "#2(6)") + kNoFrame + kClosing),
    Row("EmptyFrame", {{"Packetize", List(List(2, ""))}},
        "-1 0 null; " + Swap(kKey, "#2(3)", "#2(0)") + kNoFrame + kClosing),
    Row("DecoderFails", {{"DoFFMpegGetJpeg", 5}}, "5 0 null; " + kKey + kDecode + "~MediaUnit #2; " + kClosing),
};
struct GrabTest : RowTest {};
TEST_P(GrabTest, Goes) {
  const std::string result = Grab();
  EXPECT_EQ(result + Transcript(), Lines(GetParam().expected));
}
INSTANTIATE_TEST_SUITE_P(Way, GrabTest, testing::ValuesIn(kGrabRows), kByName);

TEST_F(ModuleTest, GrabTakesTheFirstKeyFrameAndDestroysAllOtherUnits) {
  Script("NextPartInfo", {0, 0, 99});
  Script("Packetize", {List(List(1, "late")), List(List(2, "key"), List(4, "other"), List(6, "second key"))});
  Grab();
  EXPECT_EQ(Transcript(), Lines(kOpening + kFormat + kFeed + R"(MediaUnit #2(4); ~MediaUnit #2; Packetize("")
    NextPartInfo(false,0); )" + Swap(kFeed, "#1", "#3") +
                                R"(
    MediaUnit #4(3); Packetize(""); MediaUnit #5(5); ~MediaUnit #5; Packetize(""); MediaUnit #6(10); ~MediaUnit #6
    Packetize(""); )" + kDecode +
                                "~MediaUnit #4; " + kClosing));
}

TEST_F(ModuleTest, GrabNeedsBothSlots) {
  unsigned char* jpeg = nullptr;
  int size = 0;
  EXPECT_EQ(GetImgByRTP("h", 1, "u", "p", "/", nullptr, &size, 3, 7), -1);
  EXPECT_EQ(GetImgByRTP("h", 1, "u", "p", "/", &jpeg, nullptr, 3, 7), -1);
  const std::string log = R"(log("cameracap:197","GetImgByRTP","Invalid function parameters\n"); )";
  EXPECT_EQ(Transcript(), Lines(log + log));
}

TEST_F(ModuleTest, LostAttemptsAreSilentAndBounded) {
  constexpr std::size_t kAttempts = 120;
  const struct {
    std::string function;
    Json::Value answer;
    std::size_t timesRead, unitsMade;
  } losses[] = {{"GetImgContentInfo", List(0, 1000, 0), 0, 0},
                {"GetImgContentInfo", List(-5, 1000, 0), 0, 0},
                {"GetImgContentInfo", List(INT_MAX - 3, 1000, 0), kAttempts, 0},
                {"FetchContent", 3, kAttempts, kAttempts},
                {"Packetize", List(), kAttempts, kAttempts}};
  for (const auto& [function, answer, timesRead, unitsMade] : losses) {
    Reset();
    Script(function, {answer});
    EXPECT_EQ(Grab(), "-1 0 null\n");
    EXPECT_EQ(Tails("NextPartInfo(").size(), kAttempts) << function;
    EXPECT_EQ(Tails("GetVideoFormat(").size() + Tails("log").size(), 1U);
    EXPECT_EQ(Tails("GetCurTimestamp(").size(), timesRead) << function;
    EXPECT_EQ(Tails("MediaUnit").size(), unitsMade) << function;
  }
}

TEST_F(ModuleTest, SmoothsByTheFormatsClock) {
  // The second part is empty, or its content is lost: then it has moved the times all the same.
  for (const auto& [clock, size, time] : {std::tuple{0, 0, "(5060000)"}, {1, 0, "(5000000)"}, {0, 3, "(5000000)"}}) {
    Reset();
    Script("NextPartInfo", {0, 0, 0, 5});
    Script("GetVideoFormat", {List(0, clock, 0x68323634, "cfg")});
    Script("GetImgContentInfo", {List(3, 1000, 0), List(size, 1005, 0), List(3, 1000, 60'000)});
    Script("FetchContent", {1});
    Grab();
    EXPECT_EQ(Tails(size == 0 ? "#2.SetPTS" : "#3.SetPTS"), std::vector<std::string>{time});
  }
}

TEST_F(ModuleTest, ExceptionsReleaseTheGrab) {
  for (const char* function : {"NextPartInfo", "GetVideoFormat", "Init", "GetImgContentInfo", "GetCurTimestamp",
                               "FetchContent", "Packetize", "DoFFMpegGetJpeg"}) {
    Reset();
    Script(function, {kThrow});
    EXPECT_THROW(Grab(), std::runtime_error) << function;
    for (const std::string& fault : Finish()) ADD_FAILURE() << function << ": " << fault;
  }
}

TEST_F(ModuleTest, PacketizingMayGoOnWithoutInput) {
  MP4Stream stream{MP4_STREAM_VIDEO, 1};
  stream.Init();
  EXPECT_EQ(DoPacketizeGetIframe(nullptr, *stream.packetizer, &stream), nullptr);
  EXPECT_EQ(Tails("Packetize"), std::vector<std::string>{"(\"no slot\")"});
}

}  // namespace
