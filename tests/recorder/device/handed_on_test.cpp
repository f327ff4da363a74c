#include <gtest/gtest.h>

#include "recorder/device/asked/channel_paths.h"
#include "recorder/device/asked/merged_channels.h"
#include "recorder/device/model/path_privacy.h"
#include "recorder/utility/json_text.h"
#include "tests/recorder/rows.h"

namespace recorder {
namespace {

struct PathCase {
  const char* name;
  const char* path;
  const char* found;  ///< "": all of it may be handed on
};

const PathCase kPathCases[] = {
    {"NamesOfStreams", "/h264Preview_01_main", ""},
    {"NamesOfProfiles", "/onvif/profile1/media.smp?profile=Profile_101&unicast=true&proto=Onvif", ""},
    {"TokenOfAProfile", "/onvif/snapshot?Token=MainProfileToken001", ""},
    {"NumberOfAToken", "/snap?token=000", ""},
    {"LongNamesWithNumbers", "/h264ProfileMainStream1", ""},
    {"Sizes", "/axis-media/media.amp?resolution=1920x1080&videocodec=h264", ""},
    {"Login", "/user=admin_password=tlJwpbo6_channel=1_stream=0.sdp", "a user name"},
    {"OtherToken", "/live?token=8F3a91Zz", "a token"},
    {"Session", "/live?sessionID=1", "a token"},
    {"WholeAddress", "/rtsp://camera/live", "an address"},
    {"LoginOfAnAddress", "/a:b@camera/live", "a login"},
    {"Host", "/live/192.168.1.64/1", "an address"},
    {"KeyOfAStream", "/aB3dE5fG7hI9jK1l", "a long text without a meaning"},
    {"NetworkCard", "/a0b1c2d3e4f5/live", "a long text without a meaning"},
    {"LongNumber", "/live/20150817", "a long text without a meaning"},
    {"ShortNames", "/live?id=bob&pw=hunter2", "a password"},
    {"NamesOfOneLetter", "/s/u=bob/p=hunter2x", "a user name"},
    {"LoginBehindColons", "/a?usr:bob&pass:x", "a user name"},
    {"LoginInParts", "/user/bob/pass/hunter2/live", "a user name"},
    {"LoginWithoutNames", "/a?login&bob&hunter2", "a value that is no small number and no common word"},
    {"ValueOfAnUnknownName", "/live?cb=hunter2", "a value that is no small number and no common word"},
    {"LoginWithAColonAlone", "/bob:hunter2/live", "a value that is no small number and no common word"},
    {"Key", "/live?key=abcdef12", "a token"},
    {"Pin", "/live?pin=1234", "a password"},
    {"EncodedTwice", "/live?user%253Dbob%2526pwd%253Dx", "a user name"},
    {"NetworkCardWithDashes", "/live/00-40-8c-aa-bb-cc", "an address"},
    {"HostOfIPv6", "/live/[2001:db8::1]/1", "an address"},
    {"Placeholders", "/ch{channel:02}/{stream}?id={channel0}&codec=H.264", ""},
    {"KnownSerialNumber", "/x9-27F/main", "the serial number"},
    {"KnownPassword", "/live/p%40ss/1", "the password"},
    {"KnownUserInAWord", "/superroot/rooted", ""},
};

class PathPrivacyTest : public testing::TestWithParam<PathCase> {};

TEST_P(PathPrivacyTest, NamesWhatIsNobodyElsesBusiness) {
  EXPECT_EQ(FindPrivatePart(
                GetParam().path,
                {{"the user", "root"}, {"the password", "p@ss"}, {"no address", ""}, {"the serial number", "X9-27f"}}),
            GetParam().found);
}

INSTANTIATE_TEST_SUITE_P(Path, PathPrivacyTest, testing::ValuesIn(kPathCases), kByName);

TEST(PathLogin, IsWhatItsNameTellsAndNothingElse) {
  for (const char* path : {"/live?u=admin&p=Secret99x", "/live?pin=4711", "/live?login=12&pass=123",
                           "/user/admin/pass/Secret99x", "/live?user=admin", "/live?un=a&pd=Secret99x"}) {
    EXPECT_NE(FindPathLogin(path), "") << path;
  }
  for (const char* path : {"/live?u=1&p=720", "/live?p=main", "/pass/1/main", "/live?bypass=1", "/live?pass="}) {
    EXPECT_EQ(FindPathLogin(path), "") << path;
  }
}

TEST(PathPassword, IsFoundUnderWhateverNameAndNoPlainWordIsTakenForIt) {
  for (const auto& [path, password] : {std::pair("/live/Secret%2D99x", "Secret-99x"),
                                       {"/live?x=secret-99x&y=1", "Secret-99x"},
                                       {"/live/Zebra=Horse", "Zebra=Horse"},
                                       {"/live/gate/House/1", "gate/House"},
                                       {"/live/pa%41ss9", "pa%41ss9"}}) {
    EXPECT_TRUE(HoldsPassword(path, password)) << path;
  }
  for (const auto& [path, password] :
       {std::pair("/live/gate-2x", "live"), {"/ch12/admin/9z", "admin"}, {"/12", "12"}}) {
    EXPECT_FALSE(HoldsPassword(path, password)) << path;
  }
}

struct ChannelsCase {
  const char* name;
  std::vector<ChannelPath> paths;
  const char* common;  ///< "": none
};

const ChannelsCase kChannelsCases[] = {
    {"Alone", {{"1", "/ch1"}}, "/ch1"},
    {"Counted", {{"1", "/h264/ch1/main"}, {"12", "/h264/ch12/main"}}, "/h264/ch{channel}/main"},
    {"OfTwoDigits", {{"2", "/ch02"}, {"10", "/ch10"}}, "/ch{channel:02}"},
    {"From0", {{"1", "/0?id=0"}, {"2", "/1?id=1"}}, "/{channel0}?id={channel0}"},
    {"WholeNumber", {{"101", "/c/101"}, {"102", "/c/102"}}, "/c/{channel}"},
    {"OtherNumber", {{"1", "/ch7"}, {"2", "/ch9"}}, ""},
    {"OtherWords", {{"1", "/one"}, {"2", "/two"}}, ""},
    {"MoreParts", {{"1", "/live"}, {"2", "/live2"}}, ""},
};

class CommonPathTest : public testing::TestWithParam<ChannelsCase> {};

TEST_P(CommonPathTest, HasAPlaceholderWhereTheChannelAloneDiffers) {
  EXPECT_EQ(CommonPath(GetParam().paths).value_or(""), GetParam().common);
}

INSTANTIATE_TEST_SUITE_P(Channels, CommonPathTest, testing::ValuesIn(kChannelsCases), kByName);

TEST(MergedChannels, AreTheAskedOneWhereTheListOfChannelsLacksIt) {
  std::string ignored;
  const auto models =
      ParseStrictJson(R"([{"name": "130", "channels": {"values": ["1"]}, "stream": {"path": "/"}}])", ignored);
  EXPECT_EQ(MergeChannels(models.value()).channels, std::vector<std::string>{"130"});
}

}  // namespace
}  // namespace recorder
