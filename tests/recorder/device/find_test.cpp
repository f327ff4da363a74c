#include <gtest/gtest.h>

#include "recorder/device/find/maker.h"
#include "recorder/device/find/path_pattern.h"
#include "recorder/device/find/profile_streams.h"
#include "recorder/device/find/stored_as.h"
#include "tests/recorder/rows.h"

namespace recorder::find {
namespace {

struct PatternCase {
  const char* name;
  std::vector<KnownPath> known;
  StreamSpot wanted;
  const char* path;  ///< "": none
};

const PatternCase kPatterns[] = {
    {"NumbersGrow", {{{0, 0, ""}, "/c/101"}, {{1, 0, ""}, "/c/201"}}, {31, 0, ""}, "/c/3201"},
    {"SubStreamGrowsAlike",
     {{{0, 0, ""}, "/p_01_main"}, {{0, 1, ""}, "/p_01_sub"}, {{1, 0, ""}, "/p_02_main"}, {{9, 1, ""}, "/p_10_sub"}},
     {4, 1, ""},
     "/p_05_sub"},
    {"TwoNumbers", {{{0, 0, ""}, "/s?c=0&p=1"}, {{1, 0, ""}, "/s?c=1&p=3"}}, {2, 0, ""}, "/s?c=2&p=5"},
    {"Tokens", {{{0, 0, "kq"}, "/m?t=kq"}, {{1, 0, "zz"}, "/m?t=zz"}}, {7, 0, "ab"}, "/m?t=ab"},
    {"ProofFails", {{{0, 0, ""}, "/c/1"}, {{1, 0, ""}, "/c/2"}, {{3, 0, ""}, "/c/9"}}, {2, 0, ""}, ""},
    {"OtherWords", {{{0, 0, ""}, "/front"}, {{1, 0, ""}, "/back"}}, {2, 0, ""}, ""},
    {"PlaceIsNotKnown", {{{0, 0, ""}, "/c/1"}, {{1, 0, ""}, "/c/2"}}, {2, 1, ""}, ""},
    {"NumbersBelowNone", {{{0, 0, ""}, "/c/5"}, {{1, 0, ""}, "/c/2"}}, {2, 0, ""}, ""},
    {"LongNumbersCountNothing", {{{0, 0, ""}, "/1234567890"}, {{1, 0, ""}, "/1234567891"}}, {2, 0, ""}, ""},
};

class PathPatternTest : public testing::TestWithParam<PatternCase> {};

TEST_P(PathPatternTest, WorksOutPaths) {
  EXPECT_EQ(PathByPattern(GetParam().known, GetParam().wanted).value_or(""), GetParam().path);
}
INSTANTIATE_TEST_SUITE_P(Row, PathPatternTest, testing::ValuesIn(kPatterns), kByName);

TEST(ProfilesTest, AreStoredAsTheStreamThatIsShown) {
  const auto profile = [](const char* token, const char* source, int width) {
    onvif::Profile one;
    one.token = token;
    one.source = source;
    if (width > 0) one.encoder.emplace().token = token;
    if (width > 0) one.encoder->resolution = onvif::Size{width, 240};
    return one;
  };
  FindResult found;
  found.onvifPort = 80;
  for (ProfileStream& one : StreamsOf({profile("a", "none", 0), profile("b", "two", 320), profile("c", "two", 640),
                                       profile("d", "three", 640), profile("e", "three", 320)})) {
    found.streams.push_back(one.stream);
  }
  ASSERT_EQ(found.streams.size(), 4U);
  EXPECT_EQ(found.streams[0].channel, "2") << "as a camera of ONVIF is asked, which counts the first source";
  EXPECT_EQ(StoreAs("192.0.2.7", found, found.streams[0]).vendor, "User") << "ONVIF would show the smaller one";
  EXPECT_EQ(StoreAs("192.0.2.7", found, found.streams[2]).vendor, "ONVIF");
}

TEST(MakerTest, IsNamedByWholeWordsOnly) {
  const std::vector<std::string> vendors = {"Axis", "Dahua", "LG", "TP-Link", "TP-Link-Tapo"};
  EXPECT_EQ(MakerIn("AXIS_ACCC8E012345", vendors).vendor, "Axis");
  EXPECT_TRUE(MakerIn("the axis camera", vendors).isNamed);
  EXPECT_EQ(MakerIn("galgo/1.0 taxis", vendors).vendor, "");
  EXPECT_EQ(MakerIn("TP-Link-Tapo C310", vendors).vendor, "TP-Link-Tapo");
  const MakerGuess likely = MakerIn("Login to 3f2a", vendors);
  EXPECT_EQ(likely.vendor, "Dahua");
  EXPECT_FALSE(likely.isNamed) << "others use the same words";
}

}  // namespace
}  // namespace recorder::find
