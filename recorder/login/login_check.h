#pragma once

#include <filesystem>
#include <mutex>
#include <optional>
#include <string>

#include "recorder/access/guess_pauses.h"
#include "recorder/access/remembered_logins.h"
#include "recorder/access/users.h"
#include "recorder/login/turns.h"
#include "recorder/utility/config.h"

namespace recorder {

/// A name and a password, and where they came from.
struct PasswordLogin {
  std::string user;
  std::string password;
  std::string address;
};

/// The login of a header "Authorization: Basic" (RFC 7617); nothing when it is none.
std::optional<PasswordLogin> ReadBasicLogin(const std::string& authorization, const std::string& address);

/// Checks and hashes passwords, one at a time, since each costs the time and memory of its hash. Whoever guesses has to
/// pause. Any thread.
class LoginCheck {
 public:
  LoginCheck(std::filesystem::path stateFolder, const HashCost& cost);

  /// The role of the user who logs in so. Throws HttpError: 401 for a wrong name or password, which is logged and takes
  /// as long for one as for the other; 429 in a pause; 503 when too many wait.
  Role Check(const PasswordLogin& login);

  /// The hash of a new password. Throws HttpError: 503 when too many wait.
  std::string Hash(const std::string& password);

 private:
  Turns::Turn TakeTurn(const std::string& purpose);
  std::optional<Role> Remembered(const PasswordLogin& login);
  Role CheckInTurn(const PasswordLogin& login);
  bool IsRight(const PasswordLogin& login, const User* user) const;
  [[noreturn]] void Refuse(const PasswordLogin& login);
  void RenewHash(const PasswordLogin& login, const User& user) const;

  const std::filesystem::path stateFolder_;
  const HashCost cost_;
  const std::string nobodysHash_;  // that is checked where there is no user, so that it takes as long
  Turns turns_;
  std::mutex mutex_;  // of what follows
  RememberedLogins remembered_;
  GuessPauses pauses_;
};

}  // namespace recorder
