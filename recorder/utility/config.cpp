#include "recorder/utility/config.h"

#include <json/json.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "recorder/utility/files.h"
#include "recorder/utility/json_text.h"
#include "recorder/utility/log.h"
#include "recorder/utility/secrets.h"

namespace recorder {
namespace fs = std::filesystem;
namespace {

constexpr int kVersion = 1;
constexpr int kShortestLimitMs = 100;
constexpr int kLongestLimitMs = 300'000;
constexpr int kLongestIntervalSeconds = 86'400;
constexpr int kMostHashMemoryMiB = 1024;
constexpr int kMostHashPasses = 16;
constexpr auto kDefaultPicture = "../images/add_camera_default.png";
constexpr auto kPage = "index.html";

Config currentConfig;

[[noreturn]] void Fail(const fs::path& file, const std::string& member, const std::string& mistake) {
  throw ConfigError(file.string() + ": " + member + ": " + mistake);
}

/// One member of the file. A missing member leaves its target as it is; every mistake is a ConfigError that names it.
class Member {
 public:
  Member(const fs::path& file, std::string name, const Json::Value& value)
      : file_(file), name_(std::move(name)), value_(value) {}

  fs::path Path() const {
    if (value_.isNull()) Mistake("missing");
    if (!value_.isString() || value_.asString().empty()) Mistake("must be a path");
    return fs::absolute(file_).parent_path() / value_.asString();
  }

  void Read(fs::path& target) const {
    if (!value_.isNull()) target = Path();
  }

  void Read(bool& target) const {
    if (value_.isNull()) return;
    if (!value_.isBool()) Mistake("must be true or false");
    target = value_.asBool();
  }

  void Read(std::chrono::milliseconds& target) const {
    if (value_.isNull()) return;
    if (!value_.isInt() || value_.asInt() < kShortestLimitMs || value_.asInt() > kLongestLimitMs) {
      Mistake("must be a number of milliseconds from " + std::to_string(kShortestLimitMs) + " to " +
              std::to_string(kLongestLimitMs));
    }
    target = std::chrono::milliseconds(value_.asInt());
  }

  void Read(std::chrono::seconds& target) const {
    int seconds = static_cast<int>(target.count());
    Read(seconds, 1, kLongestIntervalSeconds);
    target = std::chrono::seconds(seconds);
  }

  void Read(std::vector<std::string>& target) const {
    if (value_.isNull()) return;
    if (!value_.isArray()) Mistake("must be a list of texts");
    for (const Json::Value& entry : value_) {
      if (!entry.isString() || entry.asString().empty()) Mistake("must be a list of texts");
      target.push_back(entry.asString());
    }
  }

  void Read(int& target, int least, int most) const {
    if (value_.isNull()) return;
    if (!value_.isInt() || value_.asInt() < least || value_.asInt() > most) {
      Mistake("must be a whole number from " + std::to_string(least) + " to " + std::to_string(most));
    }
    target = value_.asInt();
  }

  void Read(LogFormat& target) const {
    if (value_.isNull()) return;
    if (value_ != "text" && value_ != "json") Mistake("must be \"text\" or \"json\"");
    target = value_ == "json" ? LogFormat::kJson : LogFormat::kText;
  }

  void ReadAddresses(std::vector<std::string>& target) const {
    Read(target);
    for (const std::string& text : target) {
      if (!ParseAddressRange(text)) Mistake('"' + text + "\" is no address such as 10.1.0.5 or fd00::5");
    }
  }

  void Read(std::vector<AddressRange>& target) const {
    std::vector<std::string> texts;
    Read(texts);
    for (const std::string& text : texts) {
      const std::optional<AddressRange> range = ParseAddressRange(text);
      if (!range) Mistake('"' + text + "\" is no range of addresses such as 10.1.0.0/16 or fe80::/10");
      target.push_back(*range);
    }
  }

  /// The number of a version, of which `known` is the newest that can be read.
  void RefuseNewerThan(int known) const {
    if (value_.isNull()) return;
    if (!value_.isInt() || value_.asInt() < 1) Mistake("must be a whole number from 1");
    if (value_.asInt() > known) {
      Mistake("is " + std::to_string(value_.asInt()) + ", this program knows version " + std::to_string(known) +
              "; use a newer program");
    }
  }

 private:
  [[noreturn]] void Mistake(const std::string& mistake) const { Fail(file_, name_, mistake); }

  const fs::path& file_;
  const std::string name_;
  const Json::Value& value_;
};

struct Setting {
  std::string_view object;  ///< in which the member stands; "": in that of the whole file
  std::string_view member;
  void (*read)(const Member& value, Config& config);
};

constexpr Setting kSettings[] = {
    // First: of a newer file's members it is not known what they mean.
    {"", "version", [](const Member& value, Config&) { value.RefuseNewerThan(kVersion); }},
    {"", "stateFolder", [](const Member& value, Config& config) { config.stateFolder = value.Path(); }},
    {"", "modelsFolder", [](const Member& value, Config& config) { config.modelsFolder = value.Path(); }},
    {"", "module", [](const Member& value, Config& config) { config.module = value.Path(); }},
    {"", "workFolder", [](const Member& value, Config& config) { config.workFolder = value.Path(); }},
    {"", "pageFolder", [](const Member& value, Config& config) { value.Read(config.pageFolder); }},
    {"", "cmsHost", [](const Member& value, Config& config) { value.Read(config.cmsHost); }},
    {"", "demandSandbox", [](const Member& value, Config& config) { value.Read(config.demandSandbox); }},
    {"", "log", [](const Member& value, Config& config) { value.Read(config.log); }},
    {"", "hostNames", [](const Member& value, Config& config) { value.Read(config.hostNames); }},
    {"logins", "hashMemoryMiB",
     [](const Member& value, Config& config) { value.Read(config.hashCost.memoryMiB, 1, kMostHashMemoryMiB); }},
    {"logins", "hashPasses",
     [](const Member& value, Config& config) { value.Read(config.hashCost.passes, 1, kMostHashPasses); }},
    {"logins", "proxies", [](const Member& value, Config& config) { value.ReadAddresses(config.proxies); }},
    {"limits", "testMs", [](const Member& value, Config& config) { value.Read(config.limits.test); }},
    {"limits", "pictureMs", [](const Member& value, Config& config) { value.Read(config.limits.picture); }},
    {"watch", "interval", [](const Member& value, Config& config) { value.Read(config.watchInterval); }},
    {"addressPolicy", "allow", [](const Member& value, Config& config) { value.Read(config.addressPolicy.allow); }},
    {"addressPolicy", "deny", [](const Member& value, Config& config) { value.Read(config.addressPolicy.deny); }},
};

std::string NameIn(std::string_view object, std::string_view member) {
  return object.empty() ? std::string(member) : std::string(object) + '.' + std::string(member);
}

/// The member of `root` that `setting` is read from; null when it is missing.
const Json::Value& ValueOf(const Setting& setting, const Json::Value& root, const fs::path& file) {
  const std::string member(setting.member);
  if (setting.object.empty()) return root[member];
  const std::string object(setting.object);
  const Json::Value& value = root[object];
  if (!value.isNull() && !value.isObject()) Fail(file, object, "must be an object");
  return value[member];
}

bool IsSetting(std::string_view object, std::string_view member) {
  return std::any_of(std::begin(kSettings), std::end(kSettings),
                     [&](const Setting& setting) { return setting.object == object && setting.member == member; });
}

bool IsObject(std::string_view name) {
  return std::any_of(std::begin(kSettings), std::end(kSettings),
                     [&](const Setting& setting) { return !setting.object.empty() && setting.object == name; });
}

/// A member that nobody reads is a mistake. `name`: of `object`, "" for the whole file.
void RefuseOthers(const Json::Value& object, const std::string& name, const fs::path& file) {
  for (const std::string& member : object.getMemberNames()) {
    const bool isObject = name.empty() && IsObject(member);
    if (!isObject && !IsSetting(name, member)) Fail(file, NameIn(name, member), "unknown member");
    if (object[member].isNull()) Fail(file, NameIn(name, member), "must not be null");
    if (isObject) RefuseOthers(object[member], member, file);
  }
}

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
void CheckFiles(const Config& config, const fs::path& file) {
  std::error_code ignored;
  if (!fs::is_directory(config.modelsFolder, ignored)) Fail(file, "modelsFolder", "is no folder");
  if (!fs::is_regular_file(config.module, ignored)) Fail(file, "module", "is no file");
  if (!fs::is_directory(config.workFolder, ignored)) Fail(file, "workFolder", "is no folder");
  if (!fs::is_regular_file(config.workFolder / kDefaultPicture, ignored)) {
    Fail(file, "workFolder", std::string("there is no ") + kDefaultPicture + " from there");
  }
  if (!config.pageFolder.empty() && !fs::is_regular_file(config.pageFolder / kPage, ignored)) {
    Fail(file, "pageFolder", std::string("there is no ") + kPage + " in it");
  }
}

}  // namespace

std::vector<std::string> SettingNames() {
  std::vector<std::string> names;
  for (const Setting& setting : kSettings) names.push_back(NameIn(setting.object, setting.member));
  return names;
}

Config LoadConfig(const fs::path& file) {
  const Json::Value root = Parse(file);
  Config config;
  for (const Setting& setting : kSettings) {
    setting.read({file, NameIn(setting.object, setting.member), ValueOf(setting, root, file)}, config);
  }
  RefuseOthers(root, "", file);
  CheckFiles(config, file);
  return config;
}

void UseConfig(const Config& config) {
  PrepareSodium();
  currentConfig = config;
  SetLogFormat(config.log);
  SetAddressPolicy(config.addressPolicy);
}

const Config& GetConfig() { return currentConfig; }

}  // namespace recorder
