#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "recorder/access/access_error.h"
#include "recorder/access/role.h"

namespace recorder {

struct User {
  std::string name;
  std::string hash;  ///< of the password, see password_hash.h
  Role role = Role::kAdmin;
};

/// The file with all users: lines "name:hash:role", mode 0600; a line of an earlier version has no role and is an
/// admin's. One that begins with '#' is left out.
std::filesystem::path UsersFile(const std::filesystem::path& stateFolder);

/// In the order of the file. This and all below want a folder that exists, and throw std::system_error that names the
/// file. Any thread and process.
std::vector<User> ReadUsers(const std::filesystem::path& stateFolder);

/// Null when there is none of this name.
const User* FindUser(const std::vector<User>& users, const std::string& name);

/// Throws AccessError when there is none of this name.
User& KnownUser(std::vector<User>& users, const std::string& name);

/// Hashes a password: HashPassword, in the turn and at the cost of whoever wants it. What it throws, its caller gets.
using PasswordHasher = std::function<std::string(const std::string& password)>;

/// A new user, of whom nobody may have the name yet. Throws AccessError, mostly before it hashes.
void AddUser(const std::filesystem::path& stateFolder, const std::string& name, const std::string& password, Role role,
             const PasswordHasher& hash);

/// The first user, an admin, by a link for him, which is used up then. Throws AccessError, also when somebody else has
/// used it or has made a user meanwhile.
void AddFirstUser(const std::filesystem::path& stateFolder, const std::string& link, const std::string& name,
                  const std::string& password, const PasswordHasher& hash);

/// What to change of a user: what is empty stays.
struct UserChange {
  std::optional<std::string> password;
  std::optional<Role> role;
};

/// Ends the user's sessions and links; tokens stay and get the new role. Throws AccessError.
void ChangeUser(const std::filesystem::path& stateFolder, const std::string& name, const UserChange& change,
                const PasswordHasher& hash);

/// With all sessions, links and tokens. Throws AccessError, also for the last admin.
void RemoveUser(const std::filesystem::path& stateFolder, const std::string& name);

/// Puts another hash of the same password in the place of `before`, unless that was changed meanwhile. Sessions stay.
void ReplaceHash(const std::filesystem::path& stateFolder, const std::string& name, const std::string& before,
                 const std::string& hash);

}  // namespace recorder
