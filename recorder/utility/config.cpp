#include "recorder/utility/config.h"

#include <json/json.h>

#include <optional>
#include <set>
#include <string>
#include <system_error>

#include "recorder/utility/files.h"
#include "recorder/utility/json_text.h"
#include "recorder/utility/secrets.h"

namespace recorder {
namespace fs = std::filesystem;
namespace {

constexpr int kVersion = 1;
constexpr int kShortestLimitMs = 100;
constexpr int kLongestLimitMs = 300'000;
constexpr auto kDefaultPicture = "../images/add_camera_default.png";
constexpr auto kPage = "index.html";

Config currentConfig;

/// Reads the members of one JSON object; every mistake is a ConfigError that names it.
class ObjectReader {
 public:
  ObjectReader(const fs::path& file, const Json::Value& object, std::string prefix)
      : file_(file), object_(object), prefix_(std::move(prefix)) {}

  [[noreturn]] void Fail(const std::string& member, const std::string& mistake) const {
    throw ConfigError(file_.string() + ": " + prefix_ + member + ": " + mistake);
  }

  fs::path Path(const char* member) {
    const Json::Value& value = Take(member);
    if (value.isNull()) Fail(member, "missing");
    if (!value.isString() || value.asString().empty()) Fail(member, "must be a path");
    return fs::absolute(file_).parent_path() / value.asString();
  }

  /// Empty when the member is missing.
  fs::path OptionalPath(const char* member) { return object_.isMember(member) ? Path(member) : fs::path(); }

  /// Call first: of a newer file's members it is not known what they mean.
  void RefuseNewerThan(int known) {
    const Json::Value& value = Take("version");
    if (value.isNull()) return;
    if (!value.isInt() || value.asInt() < 1) Fail("version", "must be a whole number from 1");
    if (value.asInt() > known) {
      Fail("version", "is " + std::to_string(value.asInt()) + ", this program knows version " + std::to_string(known) +
                          "; use a newer program");
    }
  }

  void Read(const char* member, bool& target) {
    const Json::Value& value = Take(member);
    if (value.isNull()) return;
    if (!value.isBool()) Fail(member, "must be true or false");
    target = value.asBool();
  }

  void Read(const char* member, std::chrono::milliseconds& target) {
    const Json::Value& value = Take(member);
    if (value.isNull()) return;
    if (!value.isInt() || value.asInt() < kShortestLimitMs || value.asInt() > kLongestLimitMs) {
      Fail(member, "must be a number of milliseconds from " + std::to_string(kShortestLimitMs) + " to " +
                       std::to_string(kLongestLimitMs));
    }
    target = std::chrono::milliseconds(value.asInt());
  }

  void Read(const char* member, std::vector<std::string>& target) {
    const Json::Value& value = Take(member);
    if (value.isNull()) return;
    if (!value.isArray()) Fail(member, "must be a list of texts");
    for (const Json::Value& entry : value) {
      if (!entry.isString() || entry.asString().empty()) Fail(member, "must be a list of texts");
      target.push_back(entry.asString());
    }
  }

  void Read(const char* member, std::vector<AddressRange>& target) {
    std::vector<std::string> texts;
    Read(member, texts);
    for (const std::string& text : texts) {
      const std::optional<AddressRange> range = ParseAddressRange(text);
      if (!range) Fail(member, '"' + text + "\" is no range of addresses such as 10.1.0.0/16 or fe80::/10");
      target.push_back(*range);
    }
  }

  ObjectReader Object(const char* member) {
    const Json::Value& value = Take(member);
    if (!value.isNull() && !value.isObject()) Fail(member, "must be an object");
    return {file_, value, prefix_ + member + "."};
  }

  /// Call last: a member that nobody read is a mistake.
  void RefuseOthers() const {
    if (object_.isNull()) return;
    for (const std::string& member : object_.getMemberNames()) {
      if (!taken_.contains(member)) Fail(member, "unknown member");
      if (object_[member].isNull()) Fail(member, "must not be null");
    }
  }

 private:
  const Json::Value& Take(const char* member) {
    taken_.insert(member);
    return object_[member];
  }

  const fs::path& file_;
  const Json::Value& object_;
  std::string prefix_;
  std::set<std::string> taken_;
};

Json::Value Parse(const fs::path& file) {
  std::string text;
  try {
    text = ReadFile(file);
  } catch (const std::system_error& error) {
    throw ConfigError(error.what());
  }
  std::string mistakes;
  const std::optional<Json::Value> root = ParseStrictJson(text, mistakes);
  if (!root) throw ConfigError(file.string() + ": not JSON:\n" + mistakes);
  if (!root->isObject()) throw ConfigError(file.string() + ": must hold one JSON object");
  return *root;
}

/// Mistakes that would otherwise show only when the first camera is asked.
void CheckFiles(const Config& config, const ObjectReader& reader) {
  std::error_code ignored;
  if (!fs::is_directory(config.modelsFolder, ignored)) reader.Fail("modelsFolder", "is no folder");
  if (!fs::is_regular_file(config.module, ignored)) reader.Fail("module", "is no file");
  if (!fs::is_directory(config.workFolder, ignored)) reader.Fail("workFolder", "is no folder");
  if (!fs::is_regular_file(config.workFolder / kDefaultPicture, ignored)) {
    reader.Fail("workFolder", std::string("there is no ") + kDefaultPicture + " from there");
  }
  if (!config.pageFolder.empty() && !fs::is_regular_file(config.pageFolder / kPage, ignored)) {
    reader.Fail("pageFolder", std::string("there is no ") + kPage + " in it");
  }
}

}  // namespace

Config LoadConfig(const fs::path& file) {
  const Json::Value root = Parse(file);
  ObjectReader reader{file, root, ""};
  reader.RefuseNewerThan(kVersion);
  Config config;
  config.stateFolder = reader.Path("stateFolder");
  config.modelsFolder = reader.Path("modelsFolder");
  config.module = reader.Path("module");
  config.workFolder = reader.Path("workFolder");
  config.pageFolder = reader.OptionalPath("pageFolder");
  reader.Read("cmsHost", config.cmsHost);
  reader.Read("hostNames", config.hostNames);
  ObjectReader limits = reader.Object("limits");
  limits.Read("testMs", config.limits.test);
  limits.Read("pictureMs", config.limits.picture);
  limits.RefuseOthers();
  ObjectReader addressPolicy = reader.Object("addressPolicy");
  addressPolicy.Read("allow", config.addressPolicy.allow);
  addressPolicy.Read("deny", config.addressPolicy.deny);
  addressPolicy.RefuseOthers();
  reader.RefuseOthers();
  CheckFiles(config, reader);
  return config;
}

void UseConfig(const Config& config) {
  PrepareSodium();
  currentConfig = config;
  SetAddressPolicy(config.addressPolicy);
}

const Config& GetConfig() { return currentConfig; }

}  // namespace recorder
