#include "recorder/device/model/model_files.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>

#include "rig/temp_folder.h"
#include "tests/recorder/rows.h"

namespace recorder {
namespace {

const std::string kHttpJpeg = R"(["RTSP"]}], "snapshot": {"kind": "http-jpeg", "path": "/p"})";
const std::string kModel = R"({"name": "A", "channels": {"values": ["1"], "default": "1"}, "stream": {"path": "/s"},
    "codecs": [{"name": "H.264", "streamTypes": )" +
                           kHttpJpeg + R"(, "check": "stream"})";
const std::string kAcme = R"({"vendor": "Acme", "source": "a test", "models": [)" + kModel + "]}";

/// A models folder with the repository's schema.
class FolderOfModels : public rig::TempFolder {
 public:
  FolderOfModels() { std::filesystem::copy_file(MODELS_FOLDER "/schema.json", Path() / "schema.json"); }
};

struct MistakeCase {
  const char* name;
  const char* place;
  std::string from;  // text of kAcme
  std::string to;
};

const MistakeCase kMistakeCases[] = {
    {"MemberUnknown", "/models/0", R"("check":)", R"("chekc": 1, "check":)"},
    {"BlankInVendor", "/vendor", "Acme", "Ac me"},
    {"BuiltInVendor", "/vendor", "Acme", "User"},
    {"ModelTwice", "/models/1/name", kModel, kModel + ", " + kModel},
    {"DefaultNotInList", "/models/0/channels/default", R"("default": "1")", R"("default": "2")"},
    {"ValueTwice", "/models/0/channels/values", R"(["1"])", R"(["1", "1"])"},
    {"DefaultCodec", "/models/0/defaultCodec", R"("check":)", R"("defaultCodec": "MJPEG", "check":)"},
    {"DefaultProtocol", "/models/0/rtsp/default", R"("check":)",
     R"("rtsp": {"protocols": [], "default": "tcp"}, "check":)"},
    {"PathWithoutSlash", "/models/0/stream/path", "/s", "s"},
    {"PathWithLineEnd", "/models/0/stream/path", "/s", R"(/s\r\nX:)"},
    {"PathMissing", "/models/0/snapshot/path", R"(, "path": "/p")", ""},
    {"Placeholder", "/models/0/stream/path", "/s", "/{setting}"},
    {"BraceOpen", "/models/0/stream/path", "/s", "/{channel"},
    {"SettingWithoutList", "/models/0/snapshot/settings", "/p", "/p?{setting}"},
    {"SettingOfOtherCodec", "/models/0/snapshot/settings/MJPEG", R"("/p")",
     R"("/p?{setting}", "settings": {"MJPEG": ["x"]})"},
    {"OtherCodecUnknown", "/models/0/stream/others/0/codec", R"("/s")",
     R"("/s", "others": [{"codec": "MJPEG", "path": "/o"}])"},
    {"OtherCodecTwice", "/models/0/stream/others/0/codec", R"("/s")",
     R"("/s", "others": [{"codec": "H.264", "path": "/o"}])"},
    {"PathOfUserAndModel", "/models/0/stream", R"("/s")", R"("/s", "fromUser": true)"},
    {"StreamSnapshotOverHttp", "/models/0/snapshot/kind", kHttpJpeg, R"(["HTTP"]}], "snapshot": {"kind": "stream"})"},
    {"DeviceCheckOfStream", "/models/0/check", R"("http-jpeg", "path": "/p"}, "check": "stream")",
     R"("stream"}, "check": "device")"},
};

class MistakeTest : public testing::TestWithParam<MistakeCase> {};

TEST_P(MistakeTest, IsNamedWithFileAndPlace) {
  const FolderOfModels folder;
  const auto file = folder.Write("acme.json", Replaced(kAcme, GetParam().from, GetParam().to));
  const ModelCatalog catalog = ReadModels({folder.Path()});
  EXPECT_TRUE(catalog.vendors.empty());
  ASSERT_EQ(catalog.mistakes.size(), 1U);
  EXPECT_EQ(catalog.mistakes[0].file, file);
  EXPECT_EQ(catalog.mistakes[0].place, GetParam().place);
}

INSTANTIATE_TEST_SUITE_P(Mistake, MistakeTest, testing::ValuesIn(kMistakeCases), kByName);

TEST(ModelFilesTest, ShippedFilesAreRight) {
  for (const auto& mistake : ReadModels({MODELS_FOLDER}).mistakes)
    ADD_FAILURE() << mistake.file << " " << mistake.place;
}

TEST(ModelFilesTest, OtherVendorsAreServedAndChangesCount) {
  const FolderOfModels folder;
  folder.Write("a.json", kAcme);
  folder.Write("b.json", kAcme);  // a second file of the vendor
  folder.Write("broken.json", "{\n  \"vendor\": }");
  folder.Write("deep.json", std::string(100'000, '['));
  SetModelFolders({folder.Path()});
  ASSERT_EQ(Models()->mistakes.size(), 3U);
  EXPECT_TRUE(Models()->mistakes[1].place.starts_with("Line 2"));
  const FoundModel before = FindModel("Acme", "A");
  ASSERT_TRUE(before.model);
  folder.Write("a.json", Replaced(kAcme, "\"A\"", "\"Renamed\""));
  EXPECT_FALSE(FindModel("Acme", "A").model);
  EXPECT_TRUE(FindModel("Acme", "Renamed").model);
  EXPECT_EQ(before.model->name, "A") << "a model in use stays as it is";
  EXPECT_TRUE(FindModel("Acme", "A", folder.Path() / "b.json").model);
}

// A folder that has not changed lately is not listed again.
TEST(ModelFilesTest, ChangesInAnOldFolderCount) {
  const FolderOfModels folder;
  const auto file = folder.Write("a.json", kAcme);
  const auto makeOld = [&folder] {
    std::filesystem::last_write_time(folder.Path(),
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
  };
  makeOld();
  SetModelFolders({folder.Path()});
  ASSERT_TRUE(FindModel("Acme", "A").model);
  std::ofstream(file) << Replaced(kAcme, "\"A\"", "\"Renamed\"");
  EXPECT_TRUE(FindModel("Acme", "Renamed").model) << "written in its place";
  folder.Write("b.json", Replaced(kAcme, "Acme", "Bolt"));
  EXPECT_TRUE(FindModel("Bolt", "A").model) << "another file";
  makeOld();
  ASSERT_TRUE(FindModel("Bolt", "A").model);
  std::filesystem::remove(folder.Path() / "b.json");
  EXPECT_FALSE(FindModel("Bolt", "A").model) << "a file less";
}

}  // namespace
}  // namespace recorder
