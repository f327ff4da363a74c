#include "recorder/access/remembered_logins.h"

#include <array>
#include <chrono>

#include "recorder/utility/limits.h"

namespace recorder {

namespace {

constexpr std::chrono::minutes kRemembered{1};

}  // namespace

std::optional<Role> RememberedLogins::Find(const std::string& user, const std::string& password) {
  ForgetOld(Clock::now());
  const auto found = logins_.find(KeyOf(user, password));
  return found == logins_.end() ? std::nullopt : std::optional(found->second.role);
}

void RememberedLogins::Add(const std::string& user, const std::string& password, Role role, const FileStamp& users) {
  if (users != users_) logins_.clear();
  users_ = users;
  if (logins_.size() >= kMostRememberedLogins) logins_.clear();
  logins_[KeyOf(user, password)] = {role, Clock::now()};
}

/// A name cannot hold the byte between both.
std::string RememberedLogins::KeyOf(const std::string& user, const std::string& password) const {
  std::string text = user + '\0' + password;
  const WipeAtEnd wipe(text);
  std::array<unsigned char, crypto_generichash_BYTES> hash{};
  crypto_generichash(hash.data(), hash.size(), reinterpret_cast<const unsigned char*>(text.data()), text.size(),
                     key_.Data(), SecretKey::kSize);
  return {hash.begin(), hash.end()};
}

void RememberedLogins::ForgetOld(Clock::time_point now) {
  if (!logins_.empty() && StampOf(usersFile_) != users_) logins_.clear();
  std::erase_if(logins_, [&](const auto& login) { return now - login.second.since >= kRemembered; });
}

}  // namespace recorder
