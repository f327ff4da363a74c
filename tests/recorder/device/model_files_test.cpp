#include "recorder/device/model/model_files.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>

#include "recorder/device/model/model_facts.h"
#include "recorder/device/model/model_stream.h"
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
    {"SlashInVendor", "/vendor", "Acme", "Ac/me"},
    {"ControlInVendor", "/vendor", "Acme", R"(Acme)"},
    {"ControlInName", "/models/0/name", R"("name": "A")", R"("name": "A
")"},
    {"BuiltInVendor", "/vendor", "Acme", "User"},
    {"ModelTwice", "/models/1/name", kModel, kModel + ", " + kModel},
    {"DefaultNotInList", "/models/0/channels/default", R"("default": "1")", R"("default": "2")"},
    {"ValueTwice", "/models/0/channels/values", R"(["1"])", R"(["1", "1"])"},
    {"DefaultCodec", "/models/0/defaultCodec", R"("check":)", R"("defaultCodec": "MJPEG", "check":)"},
    {"DefaultCodecOfNone", "/models/0/defaultCodec", R"("codecs": [{"name": "H.264", "streamTypes": ["RTSP"]}])",
     R"("defaultCodec": "H.264")"},
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
    {"OtherWithoutStreamAndCodec", "/models/0/stream/others/0", R"("/s")", R"("/s", "others": [{"path": "/o"}])"},
    {"OtherByAWayOfNoCodec", "/models/0/stream/others/0/codec", R"("/s"})",
     R"("/s", "others": [{"stream": "sub", "codec": "H.264", "over": "HTTP", "path": "/o"}]}, "streams": 2)"},
    {"FewerStreamsThanPaths", "/models/0/streams", R"("/s")", R"("/s", "others": [{"stream": "sub", "path": "/o"}])"},
    {"SourceMissing", "", R"("source": "a test", )", ""},
    {"SourcesEmpty", "", R"("source": "a test")", R"("sources": {})"},
    {"SourceUnknown", "/models/0/from", R"("check":)", R"("from": "nowhere", "check":)"},
    {"SourceOfNothing", "/models/0/facts/stream~1others~10", R"("source": "a test", "models": [{)",
     R"("sources": {"s": {"document": "d", "by": "user"}}, "models": [{"facts": {"stream/others/0": "s"}, )"},
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

TEST(ModelFilesTest, OwnFilesAddUpAndShippedModelsWin) {
  const FolderOfModels shipped;
  shipped.Write("a.json", kAcme);
  const rig::TempFolder own;
  const auto file = own.Write("a.json", Replaced(kAcme, kModel, Replaced(kModel, "\"A\"", "\"B\"") + ", " + kModel));
  const auto ownFolder = own.Path() / "later";
  SetModelFolders({shipped.Path(), ownFolder});
  EXPECT_FALSE(FindModel("Acme", "B").model);
  std::filesystem::create_directory(ownFolder);
  std::filesystem::rename(file, ownFolder / "a.json");
  EXPECT_EQ(FindModel("Acme", "B").origin, ModelOrigin::kOwn);
  EXPECT_EQ(FindModel("Acme", "A").origin, ModelOrigin::kShipped);
  ASSERT_EQ(Models()->mistakes.size(), 1U);
  EXPECT_EQ(Models()->mistakes[0].file, ownFolder / "a.json");
  EXPECT_EQ(Models()->mistakes[0].place, "/models/1/name");
}

const std::string kStreams = R"({"vendor": "Acme", "sources": {"s": {"document": "d", "by": "document"},
    "t": {"document": "e", "by": "reported"}}, "models": [{"name": "A", "from": "s", "streams": 0,
    "facts": {"stream/others/1": "t"}, "channels": {"values": ["1"], "default": "1", "others": true},
    "codecs": [{"name": "H.264", "streamTypes": ["RTSP"]}, {"name": "MJPEG", "streamTypes": ["HTTP"]}],
    "snapshot": {"kind": "stream"}, "check": "stream", "stream": {"path": "/{channel}/{stream}", "others": [
      {"codec": "MJPEG", "over": "HTTP", "path": "/{channel:02}.mjpg"},
      {"stream": "sub", "path": "/{channel0}/{stream0}"},
      {"stream": "sub", "codec": "H.264", "path": "/{channel:02}/{stream}"}]}}]})";

/// A stream that is asked for, and its path; "" for none.
struct StreamCase {
  const char* name;
  const char* stream;
  const char* codec;
  const char* channel;
  const char* path;
};

const StreamCase kStreamCases[] = {
    {"Main", "main", "", "", "/1/1"},
    {"MainInItsCodec", "main", "H.264", "12", "/12/1"},
    {"MainOverHttp", "main", "MJPEG", "7", "/07.mjpg"},
    {"MainInACodecWithoutPath", "main", "H.265", "1", "/1/1"},
    {"SubInACodec", "sub", "H.264", "12", "/12/2"},
    {"SubInAnyCodec", "sub", "", "12", "/11/1"},
    {"SubInACodecWithoutPath", "sub", "H.265", "1", "/0/1"},
    {"ChannelThatIsNotCounted", "sub", "", "a/0", "/a%2F0/1"},
    {"ChannelBeforeTheFirst", "sub", "H.264", "0", "/0/2"},
    {"Third", "third", "", "1", ""},
};

TEST(ModelFilesTest, EachStreamHasItsPath) {
  const FolderOfModels folder;
  folder.Write("a.json", kStreams);
  const ModelCatalog catalog = ReadModels({folder.Path()});
  ASSERT_TRUE(catalog.mistakes.empty()) << catalog.mistakes[0].place << catalog.mistakes[0].text;
  const Model& model = catalog.At(catalog.byName.at(0));
  for (const StreamCase& row : kStreamCases) {
    const ModelStream* stream = FindModelStream(model, row.stream, row.codec);
    EXPECT_EQ(stream ? StreamPath(*stream, ChannelToAsk(model, row.channel)) : "", row.path) << row.name;
  }
  FactCounts counts;
  CountFacts(model, counts);
  EXPECT_EQ(counts, (FactCounts{{"document", 4}, {"reported", 1}})) << "channel 1 alone is none";
  EXPECT_EQ(SourceOf(model, "stream/others/1")->document, "e");
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
