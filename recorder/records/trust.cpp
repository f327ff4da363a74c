#include "recorder/records/trust.h"

#include <exception>
#include <map>
#include <mutex>
#include <optional>

#include "platform/utility.h"
#include "recorder/utility/config.h"
#include "recorder/utility/log.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

static_assert(crypto_auth_KEYBYTES == SecretKey::kSize);
constexpr std::size_t kCodeSize = crypto_auth_BYTES;

std::array<unsigned char, kCodeSize> CodeOf(const std::string& timestamp, const SecretKey& key) {
  std::array<unsigned char, kCodeSize> code{};
  crypto_auth(code.data(), reinterpret_cast<const unsigned char*>(timestamp.data()), timestamp.size(), key.Data());
  return code;
}

/// The keys as they are stored now, over a connection that is kept: to open one takes longer than all else that a
/// trusted request costs.
class KeyReader {
 public:
  std::vector<TrustedKey> Read(TrustKind kind) {
    const std::lock_guard lock(mutex_);
    try {
      Refresh();
      const auto known = keys_.find(kind);
      return known != keys_.end() ? known->second : keys_[kind] = records_->ListKeys(kind);
    } catch (...) {
      records_.reset();
      throw;
    }
  }

 private:
  void Refresh() {
    const bool isKept = records_ && records_->IsCurrent();
    if (!isKept) records_.emplace(GetConfig().stateFolder);
    const std::int64_t version = records_->Version();  // before the keys: a change meanwhile is seen next time
    if (!isKept || version != version_) keys_.clear();
    version_ = version;
  }

  std::mutex mutex_;
  std::optional<Records> records_;
  std::int64_t version_ = 0;
  std::map<TrustKind, std::vector<TrustedKey>> keys_;
};

std::vector<TrustedKey> LoadKeys(TrustKind kind) {
  static KeyReader reader;
  try {
    return reader.Read(kind);
  } catch (const std::exception& error) {
    LogFailure(error.what());
    return {};
  }
}

}  // namespace

TrustPair MakePair(const SecretKey& key, std::int64_t seconds) {
  const std::string timestamp = std::to_string(seconds);
  return {HexText(CodeOf(timestamp, key)), timestamp};
}

bool IsTimely(const std::string& timestamp, std::int64_t seconds) {
  const auto made = ParseNumber<std::int64_t>(timestamp);
  return made && *made >= seconds - kPairLifetime.count() && *made <= seconds + kPairSkew.count();
}

bool IsPairValid(const TrustPair& pair, const std::vector<TrustedKey>& keys, std::int64_t seconds) {
  if (!IsTimely(pair.timestamp, seconds) || pair.cookie.size() != 2 * kCodeSize) return false;
  bool isMatch = false;
  for (const TrustedKey& trusted : keys) {  // all of them, so that time does not tell which one matched
    const std::string wanted = HexText(CodeOf(pair.timestamp, trusted.key));
    isMatch |= sodium_memcmp(wanted.data(), pair.cookie.data(), wanted.size()) == 0;
  }
  return isMatch;
}

}  // namespace recorder

bool IsAuthPairMatch(const std::string& cookie, const std::string& timestamp) {
  return recorder::IsPairValid({cookie, timestamp}, recorder::LoadKeys(recorder::TrustKind::kClient));
}

struct SlaveKdAuthentication::Impl {
  std::vector<recorder::TrustedKey> keys = recorder::LoadKeys(recorder::TrustKind::kServerGroup);
};

SlaveKdAuthentication::SlaveKdAuthentication() : impl(std::make_unique<Impl>()) {}
SlaveKdAuthentication::~SlaveKdAuthentication() = default;

bool SlaveKdAuthentication::IsAuthByPairMatch(const std::string& cookie, const std::string& timestamp) {
  return recorder::IsPairValid({cookie, timestamp}, impl->keys);
}
