#include "recorder/device/asked/camera_file.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <vector>

#include "recorder/device/asked/camera_file_text.h"
#include "recorder/device/asked/camera_lock.h"
#include "recorder/device/asked/camera_report.h"
#include "recorder/device/asked/onvif/ask.h"
#include "recorder/device/asked/psia/ask.h"
#include "recorder/device/asked/shown_text.h"
#include "recorder/device/model/built_in_models.h"
#include "recorder/device/model/model_files.h"
#include "recorder/net/login/hash.h"
#include "recorder/request/learn_serial.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/config.h"
#include "recorder/utility/files.h"
#include "recorder/utility/json_text.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/log.h"
#include "recorder/utility/state_files.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

namespace fs = std::filesystem;
using std::chrono::seconds;

constexpr seconds kRecentAge = std::chrono::hours(24);
constexpr std::chrono::hours kLongestKept{24 * 90};
constexpr std::chrono::hours kLongestWritten{1};

// --- The folder -----------------------------------------------------------------------------------------------------

constexpr char kExtension[] = ".json";

fs::path Folder() { return GetConfig().stateFolder / kCapabilitiesFolder; }

std::string HashOf(std::initializer_list<std::string> texts) {
  std::string joined;
  for (const std::string& text : texts) joined += text + '\0';
  return HexHash("SHA256", {joined});
}

/// Where the file of a camera stands, or would stand.
fs::path PathOf(const std::string& vendor, const std::string& host, int port, const std::string& variant) {
  return Folder() / (HashOf({vendor, NormalizedHost(host), std::to_string(port), variant}) + kExtension);
}

/// Of whatever vendor a camera is said to be: it is the same one. Two cameras that have the same wait for one another.
off_t LockOf(const CameraAddress& address) {
  constexpr std::size_t kDigits = 7;  // whose numbers fit into every off_t
  const std::string hash = HashOf({NormalizedHost(address.host), std::to_string(address.port)});
  return std::stol(hash.substr(0, kDigits), nullptr, 16);
}

struct KeptFileState {
  fs::path path;
  fs::file_time_type time;
};

/// Removes files that nobody has asked for in a long time, the oldest when there are too many, and what a writer left
/// behind that was ended. Other processes may do the same.
void Prune() {
  std::vector<KeptFileState> files;
  std::error_code error;
  for (fs::directory_iterator entry(Folder(), error), end; !error && entry != end; entry.increment(error)) {
    std::error_code ignored;  // a file that has just vanished
    files.push_back({entry->path(), entry->last_write_time(ignored)});
  }
  std::sort(files.begin(), files.end(), [](const auto& a, const auto& b) { return a.time > b.time; });
  const auto now = fs::file_time_type::clock::now();
  for (std::size_t i = 0; i < files.size(); ++i) {
    const auto longest = files[i].path.extension() == kExtension ? kLongestKept : kLongestWritten;
    if (i >= kMostKeptFiles || files[i].time < now - longest) fs::remove(files[i].path, error);
  }
}

// --- One camera -----------------------------------------------------------------------------------------------------

/// The channel that `asked` means where there are `channels`. A camera with one channel has it under any name.
std::string ChannelMeant(const std::string& vendor, const Choices& channels, const std::string& asked) {
  const bool isKnown = std::find(channels.values.begin(), channels.values.end(), asked) != channels.values.end();
  if (isKnown) return asked;
  const bool isReplaced = asked.empty() || channels.values.size() == 1 || vendor == kPsiaVendor;
  return isReplaced ? channels.preset : asked;
}

/// A kept file and the models in it: "" and null when there is no usable one.
struct FileContent {
  std::string text;
  std::shared_ptr<const VendorModels> models;
};

FileContent ReadContent(const std::string& vendor, const fs::path& path) try {
  std::error_code error;
  if (!fs::exists(path, error)) return {};
  std::string text = ReadFile(path);
  std::vector<ModelMistake> mistakes;
  std::shared_ptr<const VendorModels> models = ReadModelText(text, path.string(), mistakes);
  for (const ModelMistake& mistake : mistakes) {
    LogFailure("A camera's capability file counts as none: " + path.string() + ": " + mistake.place + ": " +
               mistake.text);
  }
  if (!models || models->vendor != vendor) return {};
  return {std::move(text), std::move(models)};
} catch (const std::system_error& error) {
  LogFailure(std::string("A camera's capability file counts as none: ") + error.what());
  return {};
}

/// The channel that is meant, and what the file says about it; no model where it says nothing.
AskedModel FindChannel(const std::shared_ptr<const VendorModels>& models, const std::string& asked) {
  if (!models) return {};
  AskedModel known{Outcome::kOk, nullptr, ChannelMeant(models->vendor, models->models.front().channels, asked), ""};
  const auto model = std::find_if(models->models.begin(), models->models.end(),
                                  [&](const Model& candidate) { return candidate.name == known.channel; });
  if (model == models->models.end()) return known;
  known.model = std::shared_ptr<const Model>(models, &*model);
  known.file = models->file;
  return known;
}

bool IsEnough(const AskedModel& known, Freshness freshness) {
  if (!known.model || freshness == Freshness::kNow) return false;
  const std::int64_t age = SecondsNow() - known.model->readAt;
  return age >= 0 && age < kRecentAge.count();
}

/// False, and logged, when the file could not be written.
bool Keep(const fs::path& path, const std::string& text) try {
  std::error_code error;
  const bool isNew = !fs::exists(path, error);
  ReplaceFile(path, text);
  if (isNew) Prune();
  return true;
} catch (const std::system_error& error) {
  LogFailure(std::string("Failed to keep a camera's capability file: ") + error.what());
  return false;
}

/// Asks, keeps the answer beside what was kept before, the text `earlier`, and returns what is to be read in it.
AskedModel Ask(const std::string& vendor, const CameraAddress& address, const std::string& channel,
               const fs::path& path, const std::string& earlier) {
  CameraReport report;
  AskCamera& ask = vendor == kPsiaVendor ? psia::Ask : onvif::Ask;
  const Outcome outcome = ask(address, channel, report);
  if (outcome != Outcome::kOk) return {outcome, nullptr, "", ""};
  LearnSerial(vendor, address.host, address.port, Shown(report.serial));
  std::string ignored;
  const Json::Value kept = ParseStrictJson(earlier, ignored).value_or(Json::Value());
  const std::string text = CameraFileText(vendor, PlaceOf(address), report, SecondsNow(), kept);
  std::vector<ModelMistake> mistakes;
  AskedModel known = FindChannel(ReadModelText(text, path.string(), mistakes), report.channel);
  for (const ModelMistake& mistake : mistakes) {
    LogFailure("What the camera at " + PlaceOf(address) + " says cannot be kept: " + mistake.place + ": " +
               mistake.text);
  }
  if (!known.model) return {Outcome::kNotUnderstood, nullptr, "", ""};
  if (!Keep(path, text)) known.file = "";
  return known;
}

AskedModel AskOnce(const std::string& vendor, const CameraAddress& address, const std::string& channel,
                   const fs::path& path, const std::string& earlier) {
  RequestScope& scope = RequestScope::Current();
  const std::string key = path.filename().string() + channel;
  if (const auto failure = scope.FailedAsking(key)) return {*failure, nullptr, "", ""};
  AskedModel known = Ask(vendor, address, channel, path, earlier);
  if (known.outcome == Outcome::kOk) return known;
  scope.RememberFailedAsking(key, known.outcome);
  LogFailure("The camera at " + PlaceOf(address) + " does not tell over " + vendor +
             " what it can do: " + std::string(Describe(known.outcome)) + ".");
  return known;
}

void MakeFolder() {
  try {
    MakePrivateFolder(Folder());
  } catch (const std::system_error&) {  // not reported: without a folder the answers are not kept, which is
  }
}

}  // namespace

std::string KeptFile(const std::string& vendor, const std::string& host, int port, const std::string& variant) {
  if (!IsGenericVendor(vendor)) return "";
  const fs::path path = PathOf(vendor, host, port, variant);
  std::error_code error;
  return fs::exists(path, error) ? path.string() : "";
}

std::shared_ptr<const Model> ReadCameraFile(const std::string& vendor, const std::string& file,
                                            const std::string& channel) {
  const std::shared_ptr<const VendorModels> models = file.empty() ? nullptr : ReadContent(vendor, file).models;
  if (!models) return BuiltInModel(vendor);
  AskedModel known = FindChannel(models, channel);
  return known.model ? known.model : std::shared_ptr<const Model>(models, &models->models.front());
}

std::shared_ptr<const Model> KnownModel(const CameraRecord& camera) {
  if (!IsGenericVendor(camera.vendor)) return FindModel(camera.vendor, camera.model).model;
  return ReadCameraFile(camera.vendor, KeptFile(camera.vendor, camera.host, camera.port), camera.channel);
}

AskedModel LearnCamera(const std::string& vendor, const CameraAddress& address, const std::string& channel,
                       Freshness freshness) {
  const fs::path path = PathOf(vendor, address.host, address.port, "");
  if (freshness == Freshness::kRecent) {  // such a file waits for nobody
    AskedModel kept = FindChannel(ReadContent(vendor, path).models, channel);
    if (IsEnough(kept, freshness)) return kept;
  }
  MakeFolder();
  const CameraLock lock(GetConfig().stateFolder / kCamerasLock, LockOf(address), RequestScope::Current().Deadline());
  const FileContent content = ReadContent(vendor, path);
  AskedModel kept = FindChannel(content.models, channel);
  if (IsEnough(kept, freshness)) return kept;  // since somebody else has asked meanwhile
  if (!lock) {
    kept.outcome = Outcome::kTimedOut;
    return kept;
  }
  AskedModel asked = AskOnce(vendor, address, channel, path, content.text);
  if (asked.model) return asked;
  kept.outcome = asked.outcome;
  return kept;
}

}  // namespace recorder
