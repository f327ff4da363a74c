#include "recorder/device/camera_file.h"

#include <sodium.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <vector>

#include "recorder/device/built_in_models.h"
#include "recorder/device/camera_facts.h"
#include "recorder/device/camera_file_text.h"
#include "recorder/device/key_lock.h"
#include "recorder/device/model_files.h"
#include "recorder/device/onvif/ask.h"
#include "recorder/device/psia/ask.h"
#include "recorder/net/text.h"
#include "recorder/utility/config.h"
#include "recorder/utility/files.h"
#include "recorder/utility/log.h"
#include "recorder/utility/request_scope.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

namespace fs = std::filesystem;
using std::chrono::seconds;

constexpr seconds kRecentAge = std::chrono::hours(24);
constexpr std::chrono::hours kLongestKept{24 * 90};
constexpr std::size_t kMostKept = 10'000;

// --- The folder -----------------------------------------------------------------------------------------------------

fs::path Folder() { return GetConfig().stateFolder / "capabilities"; }

/// Where the file of a camera stands, or would stand.
fs::path PathOf(const std::string& vendor, const std::string& host, int port, const std::string& variant) {
  constexpr std::size_t kDigestSize = 16;
  const char separator = '\0';
  const std::string key =
      vendor + separator + LowerCase(WithoutBrackets(host)) + separator + std::to_string(port) + separator + variant;
  std::array<unsigned char, kDigestSize> digest{};
  crypto_generichash(digest.data(), digest.size(), reinterpret_cast<const unsigned char*>(key.data()), key.size(),
                     nullptr, 0);
  std::array<char, 2 * kDigestSize + 1> hex{};
  sodium_bin2hex(hex.data(), hex.size(), digest.data(), digest.size());
  return Folder() / (std::string(hex.data()) + ".json");
}

struct KeptFileState {
  fs::path path;
  fs::file_time_type time;
};

/// Removes files that nobody has asked for in a long time, and the oldest when there are too many. Other processes may
/// do the same.
void Prune() {
  std::vector<KeptFileState> files;
  std::error_code error;
  for (fs::directory_iterator entry(Folder(), error), end; !error && entry != end; entry.increment(error)) {
    std::error_code ignored;  // a file that has just vanished
    files.push_back({entry->path(), entry->last_write_time(ignored)});
  }
  std::sort(files.begin(), files.end(), [](const auto& a, const auto& b) { return a.time > b.time; });
  const auto oldest = fs::file_time_type::clock::now() - kLongestKept;
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (i >= kMostKept || files[i].time < oldest) fs::remove(files[i].path, error);
  }
}

// --- One camera -----------------------------------------------------------------------------------------------------

std::int64_t Now() {
  return std::chrono::duration_cast<seconds>(std::chrono::system_clock::now().time_since_epoch()).count();
}

/// The channel of `model` that `asked` means. A camera with one channel has it under any name.
std::string ChannelOf(const Model& model, const std::string& asked) {
  const auto& channels = model.channels.values;
  const bool isKnown = std::find(channels.begin(), channels.end(), asked) != channels.end();
  if (isKnown) return asked;
  const bool isReplaced = asked.empty() || channels.size() == 1 || model.vendor == kPsiaVendor;
  return isReplaced ? model.channels.preset : asked;
}

/// What the file at `path` tells about the channel; no model when it tells nothing.
KnownCamera ReadKept(const std::string& vendor, const fs::path& path, const std::string& channel) {
  std::error_code error;
  if (!fs::exists(path, error)) return {};
  FoundModel found = FindModel(vendor, kGenericName, path.string());
  if (found.file.empty()) return {};
  KnownCamera known{Outcome::kOk, std::move(found.model), "", std::move(found.file)};
  known.channel = ChannelOf(*known.model, channel);
  if (!known.model->stream || known.model->stream->For(known.channel) == nullptr) return {};
  return known;
}

bool IsRecent(const KnownCamera& known) {
  if (!known.model) return false;
  const std::int64_t age = Now() - known.model->stream->For(known.channel)->readAt;
  return age >= 0 && age < kRecentAge.count();
}

/// False, and logged, when the file could not be written.
bool Keep(const fs::path& path, const std::string& text) try {
  MakePrivateFolder(path.parent_path());
  ReplaceFile(path, text);
  Prune();
  return true;
} catch (const std::system_error& error) {
  LogFailure(std::string("Failed to keep a camera's capability file: ") + error.what());
  return false;
}

/// Asks, keeps the answer, and returns what is to be read in it.
KnownCamera Ask(const std::string& vendor, const CameraAddress& address, const std::string& channel,
                const fs::path& path) {
  CameraFacts facts;
  AskCamera& ask = vendor == kPsiaVendor ? psia::Ask : onvif::Ask;
  const Outcome outcome = ask(address, channel, facts);
  if (outcome != Outcome::kOk) return {outcome, nullptr, "", ""};
  const KnownCamera earlier = ReadKept(vendor, path, "");
  const std::string text = CameraFileText(vendor, PlaceOf(address), facts, Now(), earlier.model.get());
  KnownCamera known{Outcome::kOk, ReadFutureFile(path.string(), text), facts.channel, ""};
  if (!known.model) return {Outcome::kNotUnderstood, nullptr, "", ""};
  if (Keep(path, text)) known.file = path.string();
  return known;
}

KnownCamera AskOnce(const std::string& vendor, const CameraAddress& address, const std::string& channel,
                    const fs::path& path) {
  RequestScope& scope = RequestScope::Current();
  const std::string key = path.filename().string() + channel;
  if (const auto failure = scope.FailedAsking(key)) return {*failure, nullptr, "", ""};
  KnownCamera known = Ask(vendor, address, channel, path);
  if (known.outcome == Outcome::kOk) return known;
  scope.RememberFailedAsking(key, known.outcome);
  LogFailure("The camera at " + PlaceOf(address) + " does not tell over " + vendor +
             " what it can do: " + std::string(Describe(known.outcome)) + ".");
  return known;
}

}  // namespace

std::string KeptFile(const std::string& vendor, const std::string& host, int port, const std::string& variant) {
  if (!IsGenericVendor(vendor)) return "";
  const fs::path path = PathOf(vendor, host, port, variant);
  std::error_code error;
  return fs::exists(path, error) ? path.string() : "";
}

KnownCamera LearnCamera(const std::string& vendor, const CameraAddress& address, const std::string& channel,
                        Freshness freshness) {
  const fs::path path = PathOf(vendor, address.host, address.port, "");
  const KeyLock lock(path.string(), RequestScope::Current().Deadline());
  KnownCamera kept = ReadKept(vendor, path, channel);
  if (freshness == Freshness::kRecent && IsRecent(kept)) return kept;
  if (!lock) return {Outcome::kTimedOut, std::move(kept.model), std::move(kept.channel), std::move(kept.file)};
  KnownCamera asked = AskOnce(vendor, address, channel, path);
  if (asked.model) return asked;
  kept.outcome = asked.outcome;
  return kept;
}

}  // namespace recorder
