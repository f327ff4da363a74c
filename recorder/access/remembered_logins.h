#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "recorder/access/users.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/files.h"
#include "recorder/utility/secrets.h"

namespace recorder {

/// Names and passwords that were right within the last minute, so that a script that sends them with each request does
/// not wait each time. Kept is a hash under a key that this process alone has; when users change, nothing is kept. One
/// thread at a time.
class RememberedLogins {
 public:
  explicit RememberedLogins(const std::filesystem::path& stateFolder) : usersFile_(UsersFile(stateFolder)) {}

  /// The role of the user who logged in so.
  std::optional<Role> Find(const std::string& user, const std::string& password);

  /// `users` is the stamp of the users' file before it was read for this login.
  void Add(const std::string& user, const std::string& password, Role role, const FileStamp& users);

  /// What stands for a login here. Any thread.
  std::string KeyOf(const std::string& user, const std::string& password) const;

 private:
  struct Login {
    Role role = Role::kUser;
    Clock::time_point since;
  };
  void ForgetOld(Clock::time_point now);

  const std::filesystem::path usersFile_;
  const SecretKey key_ = SecretKey::Random();
  FileStamp users_;
  std::map<std::string, Login> logins_;
};

}  // namespace recorder
