#include "cameracap/keyframe.h"

#include <climits>

#include "tests/cameracap/request.h"

using scripted::kThrow;

namespace {

// --- Presentation times ---------------------------------------------------------------------------------------------

struct Step {
  long seconds;
  long microseconds;
  std::int64_t now;
  std::int64_t pts;  ///< expected
};
struct SmootherRow {
  const char* name;
  int formatType;
  std::vector<Step> steps;
};
const SmootherRow kSmootherRows[] = {
    {"CameraClock",
     0,
     {{1000, 0, 5'000'000, 5'000'000},          // a jump by a mean of 0, reset to now
      {1000, 40'000, 5'040'000, 5'040'000},     // mean 40,000
      {1000, 100'000, 5'100'000, 5'100'000},    // mean (60,000 + 40,000) / 2
      {1000, 400'000, 5'300'000, 5'150'000},    // a jump: the mean
      {1000, 200'000, 5'150'000, 4'950'000},    // 200,000 back is no jump
      {1000, 399'999, 5'100'000, 5'149'999},    // 199,999; mean 124,999
      {1000, 600'000, 5'474'998, 5'274'998},    // 200,001 is a jump; 200,000 from now is near enough
      {1000, 600'000, 5'474'999, 5'474'999}}},  // 200,001 is not
    {"LocalClock",
     1,
     {{100, 0, 1'000'000, 1'000'000},
      {99, 999'998, 1'000'000, 999'998},    // backward mean -2
      {99, 999'993, 1'000'000, 999'993},    // (-5 - 2) >> 1 = -4
      {99, 900'000, 1'000'000, 999'989},    // a jump back: -4
      {99, 950'000, 1'000'000, 1'049'989},  // 50,000 is no jump; forward mean 50,000
      {100, 1, 1'060'000, 1'099'989},       // 50,001 is one
      {100, 1, 1'060'000, 1'099'989},       // mean 25,000
      {200, 0, 1'074'989, 1'124'989},       // a jump by it; 50,000 from now is near enough
      {200, 0, 1'074'988, 1'074'988}}},     // 50,001 is not
    {"OtherTypesAsCameraClock", 2, {{1000, 0, 5'000'000, 5'000'000}, {1000, 150'000, 5'000'000, 5'150'000}}},
    {"JumpsDoNotMoveTheMeans",
     1,
     {{1000, 0, 5'000'000, 5'000'000},
      {1000, 3, 5'000'000, 5'000'003},  // mean 3
      {2000, 0, 5'000'000, 5'000'006},
      {3000, 0, 5'000'000, 5'000'009},
      {3000, 4, 5'000'000, 5'000'013},  // mean (4 + 3) / 2 = 3
      {4000, 0, 5'000'000, 5'000'016},
      {1000, 0, 5'000'000, 5'000'016}}},  // backward mean still 0
    {"FiftySixBits",
     0,
     {{-1, 999'990, 5'000'000, 5'000'000},  // 2^56 - 10
      {0, 0, 5'000'000, 5'000'000},         // far back, not 10 on
      {0, 7, 5'000'000, 5'000'007}}},
    {"MoreThanThirtyTwoBits",
     0,
     {{2147, 483'640, 5'000'000, 5'000'000},
      {2147, 483'650, 5'000'000, 5'000'010},  // across 2^31
      {2147, 483'655, 5'000'000, 5'000'015}}},
    {"StartNearZero", 0, {{0, 70'000, 100'000, 70'000}}},  // 70,000 from the start values: no jump, near enough
};

struct SmootherTest : RowTest<SmootherRow> {};
TEST_P(SmootherTest, Steps) {
  PtsSmoother smoother;
  for (const Step& step : GetParam().steps) {
    timeval captureTime{};
    captureTime.tv_sec = step.seconds;
    captureTime.tv_usec = step.microseconds;
    EXPECT_EQ(smoother.Step(GetParam().formatType, captureTime, step.now), step.pts) << step.seconds << " s";
  }
}
INSTANTIATE_TEST_SUITE_P(Clock, SmootherTest, testing::ValuesIn(kSmootherRows), ByName());

// --- The grab -------------------------------------------------------------------------------------------------------

const unsigned int kH264 = 0x68323634;
const unsigned int kMpeg4 = 0x6d703476;

struct GrabTest : ModuleTest {
  void SetUp() override {
    ModuleTest::SetUp();
    Script("NextPartInfo", 0);
    Script("GetVideoFormat", List(-1, 0, kH264, "cfg"));  // its result is nobody's business
    Script("Init", List(-1, true));                       // nor is this one's
    Script("GetImgContentInfo", List(3, 1000, 0));
    Script("GetCurTimestamp", 5'000'000);
    Script("FetchContent", List(0, "abc"));
    Script("Packetize", List(3, "key"), Json::Value());
    Script("DoFFMpegGetJpeg", List(0, "jpg"));
  }
  void TearDown() override {
    std::free(jpeg);
    ModuleTest::TearDown();
  }
  int Grab() { return GetImgByRTP("10.0.0.9", 554, "root", "pw", "/live", &jpeg, &jpegSize, 3, 7); }
  /// Number of lines that start so.
  static int Count(const std::string& start) {
    int count = 0;
    const std::string lines = "\n" + Transcript();
    for (size_t at = 0; (at = lines.find("\n" + start, at)) != std::string::npos; ++at) ++count;
    return count;
  }
  unsigned char* jpeg = nullptr;
  int jpegSize = 77;
};

const char kOpening[] = R"(
    RtpFetch("10.0.0.9", 554, "/live", "root", "pw", false, "", 2, 4, 0, "", ""); MP4Stream(1, 7)
    NextPartInfo(null, 0)
    )";
const char kClosing[] = R"(
    ~MP4Stream; ~RtpFetch
    )";

TEST_F(GrabTest, DecodesTheFirstKeyFrame) {
  Script("NextPartInfo", 0, 0, 99);
  Script("Packetize", List(1, "late"), Json::Value(), List(2, "key"), List(4, "other"), List(6, "second key"),
         Json::Value());
  EXPECT_EQ(Grab(), 0);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(jpeg), size_t(jpegSize)), "jpg");
  EXPECT_EQ(Transcript(), Lines(std::string(kOpening) + R"(
    GetVideoFormat(1); Init(0, 1748121140, "cfg"); GetImgContentInfo(); GetCurTimestamp(); MediaUnit #1(7)
    #1.SetPTS(5000000); #1.SetDTS(5000000); #1.SetTimestamp(5000000); FetchContent(3)
    Packetize #1("\00\00\00\01abc"); ~MediaUnit #2; Packetize(); NextPartInfo(null, 0); GetImgContentInfo()
    GetCurTimestamp(); MediaUnit #3(7); #3.SetPTS(5000000); #3.SetDTS(5000000); #3.SetTimestamp(5000000)
    FetchContent(3); Packetize #3("\00\00\00\01abc"); Packetize(); ~MediaUnit #5; Packetize(); ~MediaUnit #6
    Packetize(); DoFFMpegGetJpeg(3, "cfg", "key"); ~MediaUnit #4
    )" + kClosing));
}

TEST_F(GrabTest, OtherCodecsHaveNoStartCode) {
  Script("GetVideoFormat", List(0, 0, kMpeg4, ""));
  EXPECT_EQ(Grab(), 0);
  EXPECT_EQ(Count("MediaUnit #1(3)\n"), 1);
  EXPECT_EQ(Count("Packetize #1(\"abc\")\n"), 1);
  EXPECT_EQ(Count("DoFFMpegGetJpeg(3, null, \"key\")\n"), 1);
}

TEST_F(GrabTest, NeedsBothSlots) {
  const std::string log = "log cameracap:197 GetImgByRTP \"Invalid function parameters\\n\"\n";
  EXPECT_EQ(GetImgByRTP("h", 1, "u", "p", "/", nullptr, &jpegSize, 3, 7), -1);
  EXPECT_EQ(GetImgByRTP("h", 1, "u", "p", "/", &jpeg, nullptr, 3, 7), -1);
  EXPECT_EQ(Transcript(), log + log);
}

struct FailureRow {
  const char* name;
  Params answers;
  int result;
  std::string expected;  ///< between the opening and the closing
};
const char kUntilPacketize[] = R"(
    GetVideoFormat(1); Init(0, 1748121140, "cfg"); GetImgContentInfo(); GetCurTimestamp(); MediaUnit #1(7)
    #1.SetPTS(5000000); #1.SetDTS(5000000); #1.SetTimestamp(5000000); FetchContent(3)
    Packetize #1("\00\00\00\01abc"); Packetize()
    )";
const FailureRow kFailureRows[] = {
    {"NoPart", {{"NextPartInfo", 5}}, -1, R"(
        log cameracap:221 GetImgByRTP "Get rtp header failed.\n")"},
    {"NoPacketizer", {{"Init", List(0, false)}}, -1, R"(
        GetVideoFormat(1); Init(0, 1748121140, "cfg")
        log cameracap:230 GetImgByRTP "Failed to create vdo stream Packetizer.\n")"},
    {"KeyFrameWithoutData", {{"key", List(2, Json::Value())}}, -1, std::string(kUntilPacketize) + R"(
        log cameracap:181 DecodeGetJpeg "Failed to get i frame image.\n"
        ~MediaUnit #2)"},
    {"KeyFrameOfNoBytes", {{"key", List(2, "")}}, -1, std::string(kUntilPacketize) + R"(
        log cameracap:181 DecodeGetJpeg "Failed to get i frame image.\n"
        ~MediaUnit #2)"},
    {"DecoderFails", {{"DoFFMpegGetJpeg", 5}}, 5, std::string(kUntilPacketize) + R"(
        DoFFMpegGetJpeg(3, "cfg", "key"); ~MediaUnit #2)"},
};
struct GrabFailureTest : RowTestOf<GrabTest, FailureRow> {};
TEST_P(GrabFailureTest, EndsTheGrab) {
  for (const auto& [function, answer] : GetParam().answers) {
    if (function == "key")
      Script("Packetize", answer, Json::Value());
    else
      Script(function, answer);
  }
  jpeg = static_cast<unsigned char*>(std::malloc(1));
  unsigned char* const before = jpeg;
  EXPECT_EQ(Grab(), GetParam().result);
  EXPECT_EQ(jpeg, nullptr);
  EXPECT_EQ(jpegSize, 0);
  std::free(before);
  EXPECT_EQ(Transcript(), Lines(kOpening + GetParam().expected + kClosing));
}
INSTANTIATE_TEST_SUITE_P(Cause, GrabFailureTest, testing::ValuesIn(kFailureRows), ByName());

TEST_F(GrabTest, LostAttemptsAreSilentAndBounded) {
  const std::map<std::string, Json::Value> losses[] = {{{"GetImgContentInfo", List(0, 1000, 0)}},
                                                       {{"GetImgContentInfo", List(-5, 1000, 0)}},
                                                       {{"GetImgContentInfo", List(INT_MAX - 3, 1000, 0)}},
                                                       {{"GetImgContentInfo", List(INT_MAX, 1000, 0)}},
                                                       {{"FetchContent", 3}},
                                                       {{"Packetize", Json::Value()}}};
  for (const auto& loss : losses) {
    scripted::Reset();
    SetUp();
    const auto& [function, answer] = *loss.begin();
    Script(function, answer);
    EXPECT_EQ(Grab(), -1);
    EXPECT_EQ(Count("NextPartInfo("), 120) << function;
    EXPECT_EQ(Count("GetVideoFormat("), 1);
    EXPECT_EQ(Count("log "), 0);
    EXPECT_EQ(Count("MediaUnit "), function == "GetImgContentInfo" ? 0 : 120);
    EXPECT_EQ(Count("~MediaUnit "), function == "FetchContent" ? 120 : 0);
  }
}

TEST_F(GrabTest, LastAttemptMayStillSucceed) {
  std::vector<Json::Value> sizes(119, List(0, 1000, 0));
  sizes.push_back(List(3, 1000, 0));
  scripted::SetAnswers(0, "GetImgContentInfo", sizes);
  EXPECT_EQ(Grab(), 0);
  EXPECT_EQ(Count("NextPartInfo("), 120);
}

/// The presentation times in a transcript.
std::string Times(const std::string& transcript) {
  std::istringstream lines{transcript};
  std::string times;
  for (std::string line; std::getline(lines, line);) {
    const size_t at = line.find(".SetPTS(");
    if (at != std::string::npos) times += line.substr(at + 8, line.size() - at - 9) + " ";
  }
  return times;
}

TEST_F(GrabTest, SmoothsByTheFormatsClock) {
  for (const auto& [type, times] : {std::pair{0, "5000000 5060000 "}, {1, "5000000 5000000 "}}) {
    scripted::Reset();
    SetUp();
    Script("GetVideoFormat", List(0, type, kH264, "cfg"));
    Script("GetImgContentInfo", List(3, 1000, 0), List(3, 1000, 60'000));
    Script("Packetize", Json::Value(), List(2, "key"), Json::Value());
    Grab();
    EXPECT_EQ(Times(Transcript()), times);
    EXPECT_EQ(Count("Init(" + std::to_string(type)), 1);
    std::free(jpeg);
    jpeg = nullptr;
  }
}

TEST_F(GrabTest, LostContentHasMovedTheTimesButAnEmptyPartHasNot) {
  Script("GetImgContentInfo", List(3, 1000, 0), List(0, 1005, 0), List(3, 1000, 30'000));
  Script("Packetize", Json::Value(), List(2, "key"), Json::Value());
  Grab();
  EXPECT_EQ(Times(Transcript()), "5000000 5030000 ");
  std::free(jpeg);
  jpeg = nullptr;

  scripted::Reset();
  SetUp();
  Script("GetImgContentInfo", List(3, 1000, 0), List(3, 1005, 0), List(3, 1000, 30'000));
  Script("FetchContent", List(0, "abc"), 1, List(0, "abc"));
  Script("Packetize", Json::Value(), List(2, "key"), Json::Value());
  Grab();
  EXPECT_EQ(Times(Transcript()), "5000000 5000000 5000000 ");
}

TEST_F(GrabTest, ExceptionsReleaseEverything) {
  for (const char* function : {"NextPartInfo", "GetVideoFormat", "Init", "GetImgContentInfo", "GetCurTimestamp",
                               "FetchContent", "DoFFMpegGetJpeg"}) {
    scripted::Reset();
    SetUp();
    Script(function, kThrow);
    EXPECT_THROW(Grab(), std::runtime_error) << function;
    for (const std::string& fault : scripted::Finish()) ADD_FAILURE() << function << ": " << fault;
  }
}

TEST_F(GrabTest, PacketizingMayGoOnWithoutInput) {
  MP4Stream stream{MP4_STREAM_VIDEO, 1};
  stream.Init();
  Script("Packetize", List(1, "other"), Json::Value());
  EXPECT_EQ(DoPacketizeGetIframe(nullptr, *stream.packetizer, &stream), nullptr);
  EXPECT_EQ(Count("Packetize(null)\n"), 2);
  EXPECT_EQ(Count("~MediaUnit"), 1);
}

}  // namespace
