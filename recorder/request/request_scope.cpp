#include "recorder/request/request_scope.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "recorder/utility/cause_table.h"
#include "recorder/utility/config.h"
#include "recorder/utility/log.h"
#include "recorder/utility/secrets.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

/// No camera has such a password: one that begins so and is not lent is lent no more.
constexpr std::string_view kTokenStart = "[lent-password]-";

thread_local RequestScope* currentScope = nullptr;

std::mutex requestMutex;
std::shared_ptr<RowReports> reportsOfRequest = std::make_shared<RowReports>();

/// Where threads report now; a request may put its own in that place.
std::shared_ptr<RowReports> ReportsOfRequest() {
  const std::lock_guard lock(requestMutex);
  return reportsOfRequest;
}

void SetReportsOfRequest(std::shared_ptr<RowReports> reports) {
  const std::lock_guard lock(requestMutex);
  reportsOfRequest = std::move(reports);
}

}  // namespace

RequestScope& RequestScope::Current() {
  if (currentScope != nullptr) return *currentScope;
  thread_local RequestScope scopeOfThread{GetConfig().limits.test, OfThread{}};
  return scopeOfThread;
}

RequestScope::RequestScope(std::chrono::milliseconds limit, std::uint64_t bytes)
    : limit_(limit), bytesLeft_(bytes), reports_(std::make_shared<RowReports>()), previous_(currentScope) {
  currentScope = this;
  SetReportsOfRequest(reports_);
}

RequestScope::RequestScope(std::chrono::milliseconds limit, OfPart /*kind*/)
    : limit_(limit), bytesLeft_(kCameraBytes), reports_(ReportsOfRequest()), previous_(currentScope) {
  currentScope = this;
}

RequestScope::RequestScope(std::chrono::milliseconds limit, OfThread /*kind*/)
    : limit_(limit), bytesLeft_(kCameraBytes), reports_(ReportsOfRequest()), isOfThread_(true), previous_(nullptr) {
  currentScope = this;
}

RequestScope::~RequestScope() {
  if (isOfThread_ && cause_) reports_->Add({std::move(camera_), *cause_});
  currentScope = previous_;
}

Clock::time_point RequestScope::Deadline() {
  if (!deadline_) deadline_ = Clock::now() + limit_;
  return share_.value_or(*deadline_);
}

bool RequestScope::Spend(std::uint64_t bytes, const std::string& host) {
  if (bytes > bytesLeft_ && !std::exchange(isSpent_, true)) {
    LogFailure("Camera " + host + ": more came than cameras may send to one request; nothing more is read.");
  }
  bytesLeft_ -= std::min(bytes, bytesLeft_);
  return !isSpent_;
}

std::string RequestScope::Lend(LentPassword password) {
  PrepareSodium();
  std::array<unsigned char, 16> random{};
  randombytes_buf(random.data(), random.size());
  std::string token = std::string(kTokenStart) + HexText(random);
  lent_.emplace(token, std::move(password));
  return token;
}

LentPassword* RequestScope::FindLent(const std::string& password) {
  const auto lent = lent_.find(password);
  return lent == lent_.end() ? nullptr : &lent->second;
}

const LentPassword* RequestScope::FindLent(const std::string& password) const {
  const auto lent = lent_.find(password);
  return lent == lent_.end() ? nullptr : &lent->second;
}

void RequestScope::AllowPort(const std::string& host, int port) {
  for (auto& [token, lent] : lent_) lent.AllowPort(host, port);
}

void RequestScope::RememberStream(const StreamPlace& usual, OtherStream other) {
  AllowPort(other.place.host, other.place.port);
  streams_.emplace_back(usual, std::move(other));
}

const OtherStream* RequestScope::FindStream(const StreamPlace& usual, int videoType) const {
  const auto found = std::find_if(streams_.begin(), streams_.end(), [&](const auto& known) {
    return known.first == usual && known.second.videoType == videoType;
  });
  return found == streams_.end() ? nullptr : &found->second;
}

void RequestScope::RememberKeyFrameCall(const StreamPlace& stream, KeyFrameCall call) {
  std::erase_if(keyFrameCalls_, [&](const auto& known) { return known.first == stream; });
  keyFrameCalls_.emplace_back(stream, std::move(call));
}

void RequestScope::CallForKeyFrame(const StreamPlace& stream, const std::string& user, const std::string& password,
                                   Clock::time_point end) {
  const auto call = std::find_if(keyFrameCalls_.begin(), keyFrameCalls_.end(),
                                 [&](const auto& known) { return known.first == stream; });
  if (call == keyFrameCalls_.end()) return;
  const auto failures = failures_;
  if (!call->second(user, password, end)) keyFrameCalls_.erase(call);
  failures_ = failures;
}

void RequestScope::RememberDigest(const std::string& host) { digestHosts_.insert(NormalizedHost(host)); }

bool RequestScope::KnowsDigest(const std::string& host) const { return digestHosts_.contains(NormalizedHost(host)); }

std::optional<Outcome> RequestScope::Refusal(const std::string& host, int port, const std::string& user,
                                             const std::string& password) const {
  if (password.starts_with(kTokenStart)) {
    const LentPassword* lent = FindLent(password);
    if (lent == nullptr || !lent->IsFor(host, port, user)) return Outcome::kLoginRefused;
  }
  if (isSpent_) return Outcome::kNotUnderstood;
  const auto failure = failures_.find({NormalizedHost(host), user});
  if (failure != failures_.end()) return failure->second;
  if (deadline_ && Clock::now() >= *deadline_) return Outcome::kTimedOut;
  return std::nullopt;
}

void RequestScope::Remember(const std::string& host, const std::string& user, Outcome outcome) {
  const bool isOfShare = share_ && outcome == Outcome::kTimedOut;
  if (RowOf(outcome).reach != Reach::kRequest || isOfShare) return;
  failures_.try_emplace({NormalizedHost(host), user}, outcome);
}

Outcome RequestScope::Told(Outcome outcome) const {
  const bool isUnheard = hasFailedLending_ && (!hasSentLogin_ || isLoginTaken_);
  return isUnheard && MayBeRefusedLogin(outcome) ? Outcome::kRecorderFailed : outcome;
}

std::optional<Outcome> RequestScope::FailedAsking(const std::string& key) const {
  const auto failure = failedAskings_.find(key);
  return failure == failedAskings_.end() ? std::nullopt : std::optional(failure->second);
}

HalfTime::HalfTime() : scope_(RequestScope::Current()) { scope_.share_ = End(); }

HalfTime::~HalfTime() { scope_.share_.reset(); }

Clock::time_point HalfTime::End() {
  const Clock::time_point now = Clock::now();
  return now + (RequestScope::Current().Deadline() - now) / 2;
}

}  // namespace recorder
