#include "recorder/utility/config.h"

#include <gtest/gtest.h>
#include <json/json.h>

#include <map>
#include <set>
#include <sstream>

#include "recorder/utility/files.h"
#include "rig/temp_folder.h"
#include "tests/recorder/rows.h"

namespace recorder {
namespace {

constexpr auto kGood =
    R"({"version": 1, "stateFolder": "state", "modelsFolder": "models", "pageFolder": "page", "module": "/etc/passwd",
  "workFolder": "models", "cmsHost": true, "hostNames": ["nvr.example"],
  "addressPolicy": {"allow": ["127.0.0.0/8"], "deny": ["10.1.0.0/16"]}, "limits": {"testMs": 2500, "pictureMs": 20000}})";

struct ConfigCase {
  const char* name;
  const char* from;  // text of kGood
  const char* to;
  const char* says;  // part of the message
};

const ConfigCase kConfigCases[] = {
    {"NotJson", "{\"version\"", "{version", "Line 1"},
    {"NotAnObject", kGood, "[]", "one JSON object"},
    {"MemberMissing", "\"stateFolder\"", "\"module2\"", "stateFolder: missing"},
    {"VersionIsNewer", R"("version": 1)", R"("later": {}, "version": 2)",
     "version: is 2, this program knows version 1"},
    {"VersionIsNoNumber", R"("version": 1)", R"("version": "1")", "version: must be a whole number"},
    {"RangeIsNone", "10.1.0.0/16", "10.1.0.0/33", "addressPolicy.deny: \"10.1.0.0/33\" is no range"},
    {"PolicyUnknown", "\"deny\"", "\"forbid\"", "addressPolicy.forbid: unknown member"},
    {"MemberUnknown", "cmsHost", "cmshost", "cmshost: unknown member"},
    {"MemberTwice", "\"cmsHost\": true", "\"cmsHost\": true, \"cmsHost\": false", "Duplicate key"},
    {"FlagIsText", "true", "\"true\"", "cmsHost: must be true or false"},
    {"FlagIsNull", "true", "null", "cmsHost: must not be null"},
    {"LogIsOther", R"("version": 1)", R"("version": 1, "log": "xml")", "log: must be \"text\" or \"json\""},
    {"NamesAreOneText", "[\"nvr.example\"]", "\"nvr\"", "hostNames: must be a list"},
    {"LimitTooShort", "2500", "0", "limits.testMs: must be a number of milliseconds from 100"},
    {"IntervalTooLong", R"("limits": {)", R"("watch": {"interval": 86401}, "limits": {)",
     "watch.interval: must be a whole number from 1 to 86400"},
    {"LimitUnknown", "testMs", "testMS", "limits.testMS: unknown member"},
    {"NoPageInIt", R"("pageFolder": "page")", R"("pageFolder": "models")", "pageFolder: there is no index.html"},
    {"NoPictureFromThere", "\"workFolder\": \"models\"", "\"workFolder\": \"/\"", "workFolder: there is no ../images"},
};

/// A folder with all that configurations here name.
struct ConfigFolder : rig::TempFolder {
  ConfigFolder() {
    Write("images/add_camera_default.png", "picture");
    for (const char* name : {"models/readme", "page/index.html"}) Write(name, "");
  }
};

class ConfigTest : public testing::TestWithParam<ConfigCase> {};

TEST_P(ConfigTest, NamesFileMemberAndMistake) {
  const ConfigFolder folder;
  EXPECT_NO_THROW(LoadConfig(folder.Write("good.json", kGood)));
  const std::string mistaken = Replaced(kGood, GetParam().from, GetParam().to);
  const auto file = folder.Write("recorder.json", mistaken);
  try {
    LoadConfig(file);
    FAIL() << "accepted";
  } catch (const ConfigError& error) {
    EXPECT_NE(std::string(error.what()).find(file.string()), std::string::npos) << error.what();
    EXPECT_NE(std::string(error.what()).find(GetParam().says), std::string::npos) << error.what();
  }
  EXPECT_EQ(ReadFile(file), mistaken);
}

INSTANTIATE_TEST_SUITE_P(Mistake, ConfigTest, testing::ValuesIn(kConfigCases), kByName);

/// All that docs/config.schema.json describes, by the names that the reader has.
std::map<std::string, Json::Value> SchemaMembers() {
  Json::Value schema;
  std::istringstream(ReadFile(SOURCE_FOLDER "/docs/config.schema.json")) >> schema;
  std::map<std::string, Json::Value> members;
  const auto add = [&](const Json::Value& object, const std::string& prefix, const auto& self) -> void {
    for (const std::string& name : object["properties"].getMemberNames()) {
      const Json::Value& member = object["properties"][name];
      EXPECT_FALSE(member["description"].asString().empty()) << prefix << name;
      if (member["type"] == "object") {
        self(member, name + ".", self);
      } else {
        members[prefix + name] = member;
      }
    }
  };
  add(schema, "", add);
  return members;
}

TEST(ConfigSchemaTest, DescribesWhatIsRead) {
  std::set<std::string> described;
  for (const auto& [name, member] : SchemaMembers()) described.insert(name);
  const std::vector<std::string> names = SettingNames();
  EXPECT_EQ(described, std::set<std::string>(names.begin(), names.end()));
}

TEST(ConfigSchemaTest, HasTheDefaultsAndLimitsThatCount) {
  const ConfigFolder folder;
  const auto load = [&](const std::string& limits) {
    return LoadConfig(folder.Write("recorder.json", R"({"stateFolder": "s", "modelsFolder": "models", "module":
      "/etc/passwd", "workFolder": "models", "limits": {)" +
                                                        limits + "}}"));
  };
  for (const auto& [name, member] : SchemaMembers()) {
    if (!name.starts_with("limits.")) continue;
    const auto with = [&, start = '"' + name.substr(7) + "\": "](int value) {
      return load(start + std::to_string(value));
    };
    EXPECT_EQ(with(member["default"].asInt()).limits, load("").limits) << name;
    EXPECT_NO_THROW(with(member["minimum"].asInt())) << name;
    EXPECT_NO_THROW(with(member["maximum"].asInt())) << name;
    EXPECT_THROW(with(member["minimum"].asInt() - 1), ConfigError) << name;
    EXPECT_THROW(with(member["maximum"].asInt() + 1), ConfigError) << name;
  }
}

}  // namespace
}  // namespace recorder
