#include "recorder/utility/request_scope.h"

#include <algorithm>
#include <array>

#include "recorder/utility/text.h"

namespace recorder {
namespace {

CameraLimits cameraLimits;
thread_local RequestScope* currentScope = nullptr;

}  // namespace

void SetCameraLimits(const CameraLimits& limits) { cameraLimits = limits; }

const CameraLimits& GetCameraLimits() { return cameraLimits; }

RequestScope& RequestScope::Current() {
  if (currentScope != nullptr) return *currentScope;
  thread_local RequestScope scopeOfThread{cameraLimits.test};
  return scopeOfThread;
}

RequestScope::RequestScope(std::chrono::milliseconds limit) : limit_(limit), previous_(currentScope) {
  currentScope = this;
}

RequestScope::~RequestScope() { currentScope = previous_; }

Clock::time_point RequestScope::Deadline() {
  if (!deadline_) deadline_ = Clock::now() + limit_;
  return *deadline_;
}

void RequestScope::LendPassword(std::string password, const std::string& host, int port) {
  if (password.empty()) return;  // no secret, and every camera without a password would be refused
  if (!key_) key_ = SecretKey::Random();
  lent_.push_back({DigestOf(password), NormalizedHost(host), {port}});
  sodium_memzero(password.data(), password.size());
}

void RequestScope::AllowPort(const std::string& host, int port) {
  const std::string wanted = NormalizedHost(host);
  for (LentPassword& lent : lent_) {
    if (lent.host == wanted) lent.ports.insert(port);
  }
}

std::optional<Outcome> RequestScope::Refusal(const std::string& host, int port, const std::string& user,
                                             const std::string& password) const {
  if (refusesLogins_ || IsLentElsewhere(host, port, password)) return Outcome::kLoginRefused;
  const auto failure = failures_.find({NormalizedHost(host), user});
  if (failure != failures_.end()) return failure->second;
  if (deadline_ && Clock::now() >= *deadline_) return Outcome::kTimedOut;
  return std::nullopt;
}

void RequestScope::Remember(const std::string& host, const std::string& user, Outcome outcome) {
  constexpr std::array kLasting{Outcome::kLoginRefused, Outcome::kClockUnknown, Outcome::kTimedOut};
  if (std::find(kLasting.begin(), kLasting.end(), outcome) == kLasting.end()) return;
  failures_.try_emplace({NormalizedHost(host), user}, outcome);
}

std::optional<Outcome> RequestScope::FailedAsking(const std::string& key) const {
  const auto failure = failedAskings_.find(key);
  return failure == failedAskings_.end() ? std::nullopt : std::optional(failure->second);
}

RequestScope::Digest RequestScope::DigestOf(const std::string& password) const {
  Digest digest;
  crypto_generichash(digest.data(), digest.size(), reinterpret_cast<const unsigned char*>(password.data()),
                     password.size(), key_->Data(), SecretKey::kSize);
  return digest;
}

bool RequestScope::IsLentElsewhere(const std::string& host, int port, const std::string& password) const {
  if (lent_.empty()) return false;
  const Digest digest = DigestOf(password);
  const std::string wanted = NormalizedHost(host);
  bool isLent = false;
  for (const LentPassword& lent : lent_) {  // two cameras may have the same password
    if (sodium_memcmp(lent.digest.data(), digest.data(), digest.size()) != 0) continue;
    if (lent.host == wanted && lent.ports.contains(port)) return false;
    isLent = true;
  }
  return isLent;
}

}  // namespace recorder
