#include "recorder/utility/config.h"

#include <gtest/gtest.h>
#include <json/json.h>

#include <sstream>

#include "recorder/utility/files.h"
#include "tests/recorder/utility/temp_folder.h"

namespace recorder {
namespace {

constexpr auto kGood = R"({"stateFolder": "state", "modelsFolder": "models", "module": "/etc/passwd",
  "workFolder": "models", "cmsHost": true, "hostNames": ["nvr.example"], "limits": {"testMs": 2500, "pictureMs": 20000}})";

struct ConfigCase {
  const char* name;
  const char* from;  // text of kGood
  const char* to;
  const char* says;  // part of the message
};

const ConfigCase kConfigCases[] = {
    {"NotJson", "{\"stateFolder\"", "{stateFolder", "Line 1"},
    {"NotAnObject", kGood, "[]", "one JSON object"},
    {"Empty", kGood, "", "not JSON"},
    {"MemberMissing", "\"stateFolder\"", "\"module2\"", "stateFolder: missing"},
    {"MemberUnknown", "cmsHost", "cmshost", "cmshost: unknown member"},
    {"MemberTwice", "\"cmsHost\": true", "\"cmsHost\": true, \"cmsHost\": false", "Duplicate key"},
    {"PathIsNumber", "\"state\"", "7", "stateFolder: must be a path"},
    {"FlagIsText", "true", "\"true\"", "cmsHost: must be true or false"},
    {"FlagIsNull", "true", "null", "cmsHost: must not be null"},
    {"NamesAreOneText", "[\"nvr.example\"]", "\"nvr\"", "hostNames: must be a list"},
    {"LimitTooShort", "2500", "0", "limits.testMs: must be a number of milliseconds from 100"},
    {"LimitIsNoWholeNumber", "2500", "2500.5", "limits.testMs: must be a number"},
    {"LimitUnknown", "testMs", "testMS", "limits.testMS: unknown member"},
    {"ModelsMissing", "\"modelsFolder\": \"models\"", "\"modelsFolder\": \"none\"", "modelsFolder: is no folder"},
    {"ModuleMissing", "/etc/passwd", "none.so", "module: is no file"},
    {"NoPictureFromThere", "\"workFolder\": \"models\"", "\"workFolder\": \"/\"", "workFolder: there is no ../images"},
};

class ConfigTest : public testing::TestWithParam<ConfigCase> {
 protected:
  ConfigTest() {
    folder.Write("images/add_camera_default.png", "picture");
    folder.Write("models/readme", "");
  }
  TempFolder folder;
};

TEST_P(ConfigTest, NamesFileMemberAndMistake) {
  std::string text = kGood;
  text.replace(text.find(GetParam().from), std::string(GetParam().from).size(), GetParam().to);
  const auto file = folder.Write("recorder.json", text);
  try {
    LoadConfig(file);
    FAIL() << "accepted: " << text;
  } catch (const ConfigError& error) {
    EXPECT_NE(std::string(error.what()).find(file.string()), std::string::npos) << error.what();
    EXPECT_NE(std::string(error.what()).find(GetParam().says), std::string::npos) << error.what();
  }
}

INSTANTIATE_TEST_SUITE_P(Mistake, ConfigTest, testing::ValuesIn(kConfigCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(ConfigTest, RelativePathsStartAtTheFile) {
  const Config config = LoadConfig(folder.Write("recorder.json", kGood));
  EXPECT_EQ(config.stateFolder, folder.Path() / "state");
  EXPECT_EQ(config.module, "/etc/passwd");
  EXPECT_TRUE(config.cmsHost);
  EXPECT_EQ(config.hostNames, std::vector<std::string>{"nvr.example"});
  EXPECT_EQ(config.limits.test, std::chrono::milliseconds(2500));
  EXPECT_EQ(config.limits.picture, std::chrono::milliseconds(20'000));
}

TEST(ConfigSchemaTest, KnowsTheSameMembers) {
  Json::Value schema;
  Json::Value good;
  std::istringstream(ReadFile(CONFIG_SCHEMA)) >> schema;
  std::istringstream(kGood) >> good;
  EXPECT_EQ(schema["properties"].getMemberNames(), good.getMemberNames());
  EXPECT_EQ(schema["properties"]["limits"]["properties"].getMemberNames(), good["limits"].getMemberNames());
}

}  // namespace
}  // namespace recorder
