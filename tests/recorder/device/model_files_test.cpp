#include "recorder/device/model_files.h"

#include <gtest/gtest.h>
#include <json/json.h>

#include "tests/recorder/utility/temp_folder.h"

namespace recorder {
namespace {

constexpr char kAcme[] = R"({
  "vendor": "Acme", "source": "a test",
  "models": [{
    "name": "A", "channels": {"values": ["1"], "default": "1"},
    "codecs": [{"name": "H.264", "streamTypes": ["RTSP"]}],
    "stream": {"path": "/s"}, "snapshot": {"kind": "http-jpeg", "path": "/p"}, "check": "stream"
  }]
})";

Json::Value Acme() {
  Json::Value json;
  Json::CharReaderBuilder builder;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  reader->parse(kAcme, kAcme + sizeof(kAcme) - 1, &json, nullptr);
  return json;
}

/// A models folder with the repository's schema.
class ModelFolder : public TempFolder {
 public:
  ModelFolder() { std::filesystem::copy_file(std::string(MODELS_FOLDER) + "/schema.json", Path() / "schema.json"); }
};

struct MistakeCase {
  const char* name;
  const char* place;
  void (*spoil)(Json::Value& file, Json::Value& model);
};

const MistakeCase kMistakeCases[] = {
    {"MemberMissing", "/models/0", [](auto&, auto& model) { model.removeMember("channels"); }},
    {"MemberUnknown", "/models/0", [](auto&, auto& model) { model["chanels"] = 1; }},
    {"WrongType", "/models/0/streams", [](auto&, auto& model) { model["streams"] = "two"; }},
    {"PortOutOfRange", "/models/0/stream/port", [](auto&, auto& model) { model["stream"]["port"] = 65536; }},
    {"CodecUnknown", "/models/0/codecs/0/name", [](auto&, auto& model) { model["codecs"][0]["name"] = "h264"; }},
    {"BlankInVendor", "/vendor", [](auto& file, auto&) { file["vendor"] = "Ac me"; }},
    {"BuiltInVendor", "/vendor", [](auto& file, auto&) { file["vendor"] = "User"; }},
    {"ModelTwice", "/models/1/name", [](auto& file, auto& model) { file["models"].append(Json::Value(model)); }},
    {"DefaultNotInList", "/models/0/channels/default", [](auto&, auto& model) { model["channels"]["default"] = "2"; }},
    {"ValueTwice", "/models/0/channels/values", [](auto&, auto& model) { model["channels"]["values"].append("1"); }},
    {"DefaultCodec", "/models/0/defaultCodec", [](auto&, auto& model) { model["defaultCodec"] = "MJPEG"; }},
    {"DefaultProtocol", "/models/0/rtsp/default",
     [](auto&, auto& model) {
       model["rtsp"]["protocols"] = Json::Value(Json::arrayValue);
       model["rtsp"]["default"] = "tcp";
     }},
    {"PathWithoutSlash", "/models/0/stream/path", [](auto&, auto& model) { model["stream"]["path"] = "s"; }},
    {"PathWithLineEnd", "/models/0/stream/path", [](auto&, auto& model) { model["stream"]["path"] = "/s\r\nX:"; }},
    {"PathMissing", "/models/0/snapshot/path", [](auto&, auto& model) { model["snapshot"].removeMember("path"); }},
    {"Placeholder", "/models/0/stream/path", [](auto&, auto& model) { model["stream"]["path"] = "/{setting}"; }},
    {"BraceOpen", "/models/0/stream/path", [](auto&, auto& model) { model["stream"]["path"] = "/{channel"; }},
    {"SettingWithoutList", "/models/0/snapshot/settings",
     [](auto&, auto& model) { model["snapshot"]["path"] = "/p?{setting}"; }},
    {"SettingOfOtherCodec", "/models/0/snapshot/settings/MJPEG",
     [](auto&, auto& model) {
       model["snapshot"]["path"] = "/p?{setting}";
       model["snapshot"]["settings"]["MJPEG"].append("x");
     }},
    {"PathOfUserAndModel", "/models/0/stream", [](auto&, auto& model) { model["stream"]["fromUser"] = true; }},
    {"StreamSnapshotOverHttp", "/models/0/snapshot/kind",
     [](auto&, auto& model) {
       model["snapshot"] = Json::Value(Json::objectValue);
       model["snapshot"]["kind"] = "stream";
       model["codecs"][0]["streamTypes"][0] = "HTTP";
     }},
    {"DeviceCheckOfStream", "/models/0/check",
     [](auto&, auto& model) {
       model["snapshot"] = Json::Value(Json::objectValue);
       model["snapshot"]["kind"] = "stream";
       model["check"] = "device";
     }},
};

class MistakeTest : public testing::TestWithParam<MistakeCase> {};

TEST_P(MistakeTest, IsNamedWithFileAndPlace) {
  Json::Value json = Acme();
  Json::Value model = json["models"][0];
  GetParam().spoil(json, model);
  json["models"][0] = model;
  const ModelFolder folder;
  const auto file = folder.Write("acme.json", json.toStyledString());
  const ModelCatalog catalog = ReadModels(folder.Path());
  EXPECT_TRUE(catalog.vendors.empty());
  ASSERT_EQ(catalog.mistakes.size(), 1U);
  EXPECT_EQ(catalog.mistakes[0].file, file);
  EXPECT_EQ(catalog.mistakes[0].place, GetParam().place);
  EXPECT_FALSE(catalog.mistakes[0].text.empty());
}

INSTANTIATE_TEST_SUITE_P(Mistake, MistakeTest, testing::ValuesIn(kMistakeCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(ModelFilesTest, ShippedFilesAreRight) {
  for (const ModelMistake& mistake : ReadModels(MODELS_FOLDER).mistakes) {
    ADD_FAILURE() << mistake.file << " " << mistake.place << ": " << mistake.text;
  }
}

TEST(ModelFilesTest, OtherVendorsAreServedAndChangesCount) {
  const ModelFolder folder;
  folder.Write("a.json", kAcme);
  folder.Write("b.json", kAcme);  // a second file of the vendor
  folder.Write("broken.json", "{\n  \"vendor\": }");
  folder.Write("deep.json", std::string(100'000, '['));
  SetModelsFolder(folder.Path());
  EXPECT_EQ(Models()->mistakes.size(), 3U);
  EXPECT_TRUE(Models()->mistakes[1].place.starts_with("Line 2"));
  const FoundModel before = FindModel("Acme", "A");
  ASSERT_TRUE(before.model);

  Json::Value json = Acme();
  json["models"][0]["name"] = "Renamed";
  folder.Write("a.json", json.toStyledString());
  EXPECT_FALSE(FindModel("Acme", "A").model);
  EXPECT_TRUE(FindModel("Acme", "Renamed").model);
  EXPECT_EQ(before.model->name, "A") << "a model in use stays as it is";
  EXPECT_TRUE(FindModel("Acme", "A", before.file + "/../b.json").model == nullptr);
  EXPECT_TRUE(FindModel("Acme", "A", folder.Path() / "b.json").model);
}

}  // namespace
}  // namespace recorder
