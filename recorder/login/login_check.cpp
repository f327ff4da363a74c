#include "recorder/login/login_check.h"

#include <sodium.h>

#include <exception>
#include <utility>

#include "recorder/access/grant.h"
#include "recorder/access/password_hash.h"
#include "recorder/http/http_request.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/log.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

constexpr std::string_view kBasic = "Basic ";

HttpError TryLater(int status, const std::string& reason, std::chrono::seconds after) {
  return {status, reason, "Retry-After: " + std::to_string(after.count()) + "\r\n"};
}

/// A longer one is none, and could push the address out of the line.
std::string NameForLog(const std::string& name) {
  return name.size() <= kLongestUserName ? name : name.substr(0, kLongestUserName) + "...";
}

}  // namespace

std::optional<PasswordLogin> ReadBasicLogin(const std::string& authorization, const std::string& address) {
  if (!StartsWithIgnoreCase(authorization, kBasic)) return std::nullopt;
  const std::string_view code = Trimmed(std::string_view(authorization).substr(kBasic.size()));
  std::string text(code.size(), '\0');
  const WipeAtEnd wipe(text);
  std::size_t size = 0;
  if (sodium_base642bin(reinterpret_cast<unsigned char*>(text.data()), text.size(), code.data(), code.size(), nullptr,
                        &size, nullptr, sodium_base64_VARIANT_ORIGINAL) != 0) {
    return std::nullopt;
  }
  std::string_view rest = std::string_view(text).substr(0, size);
  const std::string_view user = TakeUntil(rest, ':');
  return PasswordLogin{std::string(user), std::string(rest), address};
}

LoginCheck::LoginCheck(std::filesystem::path stateFolder, const HashCost& cost)
    : stateFolder_(std::move(stateFolder)),
      cost_(cost),
      nobodysHash_(HashPassword(MakeSecret(), cost)),
      remembered_(stateFolder_) {}

Role LoginCheck::Check(const PasswordLogin& login) {
  if (const auto role = Remembered(login)) return *role;
  const Turns::Turn turn = TakeTurn(remembered_.KeyOf(login.user, login.password));
  if (const auto role = Remembered(login)) return *role;
  return CheckInTurn(login);
}

std::string LoginCheck::Hash(const std::string& password) {
  const Turns::Turn turn = TakeTurn(MakeSecret());  // nobody else waits for the same
  return HashPassword(password, cost_);
}

Turns::Turn LoginCheck::TakeTurn(const std::string& purpose) {
  if (auto turn = turns_.Take(purpose)) return *std::move(turn);
  throw TryLater(503, "too many logins are waiting; try again", std::chrono::seconds(2));
}

/// Throws HttpError in a pause.
std::optional<Role> LoginCheck::Remembered(const PasswordLogin& login) {
  const std::lock_guard lock(mutex_);
  if (const auto role = remembered_.Find(login.user, login.password)) return role;
  const auto pause = pauses_.Remaining(login.user, login.address, Clock::now());
  if (pause.count() > 0) throw TryLater(429, "wrong passwords came before; try again after a pause", pause);
  return std::nullopt;
}

Role LoginCheck::CheckInTurn(const PasswordLogin& login) {
  const FileStamp stamp = StampOf(UsersFile(stateFolder_));
  const std::vector<User> users = ReadUsers(stateFolder_);
  const User* user = FindUser(users, login.user);
  if (!IsRight(login, user)) Refuse(login);
  RenewHash(login, *user);
  const std::lock_guard lock(mutex_);
  pauses_.Forget(login.user, login.address);
  remembered_.Add(login.user, login.password, user->role, stamp);
  return user->role;
}

/// Wherever the current kind of hash was not checked, that of nobody is.
bool LoginCheck::IsRight(const PasswordLogin& login, const User* user) const {
  const bool isRight = user != nullptr && IsPasswordOf(user->hash, login.password);
  if (!isRight && (user == nullptr || !IsCurrentKind(user->hash))) IsPasswordOf(nobodysHash_, login.password);
  return isRight;
}

void LoginCheck::Refuse(const PasswordLogin& login) {
  {
    const std::lock_guard lock(mutex_);
    pauses_.AddFailure(login.user, login.address, Clock::now());
  }
  LogFailure("Login of \"" + NameForLog(login.user) + "\" from " + login.address + " failed.");
  throw HttpError(401, "the user or the password is wrong");
}

/// Where that fails the old hash stays, and the login is right all the same.
void LoginCheck::RenewHash(const PasswordLogin& login, const User& user) const try {
  if (!IsOutdatedHash(user.hash, cost_)) return;
  ReplaceHash(stateFolder_, user.name, user.hash, HashPassword(login.password, cost_));
} catch (const std::exception& error) {
  LogFailure(error.what());
}

}  // namespace recorder
