#include "recorder/access/users.h"

#include <algorithm>
#include <utility>

#include "recorder/access/access_files.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/secrets.h"
#include "recorder/utility/state_files.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

using std::filesystem::path;

User ReadUser(std::string_view line) {
  User user;
  user.name = TakeUntil(line, ':');
  user.hash = TakeUntil(line, ':');
  user.role = line.empty() ? Role::kAdmin : ParseRole(line).value_or(Role::kUser);
  return user;
}

void CheckName(const std::string& name) {
  if (name.empty() || name.size() > kLongestUserName || name.front() == '#' || name.find(':') != std::string::npos ||
      HoldsControls(name) || !IsUtf8(name) || Trimmed(name) != name) {
    throw AccessError(AccessError::Kind::kInvalid,
                      "a user name is not empty, has at most 128 bytes, no ':' and no control character, and does not "
                      "begin with '#' or a blank, or end with one");
  }
}

void CheckPassword(const std::string& password) {
  if (CountCharacters(password) < kShortestUserPassword) {
    throw AccessError(AccessError::Kind::kInvalid,
                      "the password has fewer than " + std::to_string(kShortestUserPassword) + " characters");
  }
  if (password.size() > kLongestUserPassword) {
    throw AccessError(AccessError::Kind::kInvalid,
                      "the password is longer than " + std::to_string(kLongestUserPassword) + " bytes");
  }
  if (HoldsControls(password)) throw AccessError(AccessError::Kind::kInvalid, "the password holds a control character");
}

std::string CheckedHash(const std::string& password, const PasswordHasher& hash) {
  CheckPassword(password);
  return hash(password);
}

void CheckIsNew(const std::vector<User>& users, const std::string& name) {
  if (FindUser(users, name) == nullptr) return;
  throw AccessError(AccessError::Kind::kConflict, "there is a user " + name + " already");
}

void CheckMayBeFirst(const AccessFiles& files, const std::string& link) {
  const auto isMeant = [hash = HashOfSecret(link)](const Grant& grant) {
    return grant.kind == Grant::Kind::kLink && grant.user.empty() && grant.hash == hash;
  };
  if (files.users.empty() && std::any_of(files.grants.begin(), files.grants.end(), isMeant)) return;
  throw AccessError(AccessError::Kind::kConflict, "there is a first user already, or the link is too old");
}

void KeepAnAdmin(const std::vector<User>& users) {
  const auto isAdmin = [](const User& user) { return user.role == Role::kAdmin; };
  if (std::any_of(users.begin(), users.end(), isAdmin)) return;
  throw AccessError(AccessError::Kind::kConflict, "this is the last admin: nobody would be left who manages users");
}

/// First the grants: if the power fails between both, nobody goes on as who he was.
void Save(const AccessFiles& files) {
  files.SaveGrants();
  files.SaveUsers();
}

}  // namespace

path UsersFile(const path& stateFolder) { return stateFolder / kUsersFile; }

std::vector<User> ReadUsers(const path& stateFolder) {
  const path file = UsersFile(stateFolder);
  std::vector<User> users;
  if (!std::filesystem::exists(file)) return users;
  const std::string text = ReadFile(file);
  for (std::string_view rest = text; !rest.empty();) {
    const std::string_view line = TakeUntil(rest, '\n');
    if (!line.empty() && line.front() != '#') users.push_back(ReadUser(line));
  }
  return users;
}

const User* FindUser(const std::vector<User>& users, const std::string& name) {
  const auto found = std::find_if(users.begin(), users.end(), [&](const User& user) { return user.name == name; });
  return found == users.end() ? nullptr : &*found;
}

User& KnownUser(std::vector<User>& users, const std::string& name) {
  const User* found = FindUser(users, name);
  if (found == nullptr) throw AccessError(AccessError::Kind::kMissing, "there is no user " + name);
  return users[static_cast<std::size_t>(found - users.data())];
}

void AddUser(const path& stateFolder, const std::string& name, const std::string& password, Role role,
             const PasswordHasher& hash) {
  CheckName(name);
  CheckIsNew(ReadUsers(stateFolder), name);
  const User user{name, CheckedHash(password, hash), role};
  AccessFiles files(stateFolder);
  CheckIsNew(files.users, name);  // nobody came meanwhile
  files.users.push_back(user);
  files.SaveUsers();
}

void AddFirstUser(const path& stateFolder, const std::string& link, const std::string& name,
                  const std::string& password, const PasswordHasher& hash) {
  CheckName(name);
  const User user{name, CheckedHash(password, hash), Role::kAdmin};
  AccessFiles files(stateFolder);
  CheckMayBeFirst(files, link);
  std::erase_if(files.grants, [](const Grant& grant) { return grant.user.empty(); });
  files.users.push_back(user);
  Save(files);
}

void ChangeUser(const path& stateFolder, const std::string& name, const UserChange& change,
                const PasswordHasher& hash) {
  std::vector<User> users = ReadUsers(stateFolder);
  KnownUser(users, name);  // before the hash, which costs much
  const std::string newHash = change.password ? CheckedHash(*change.password, hash) : "";
  AccessFiles files(stateFolder);
  User& user = KnownUser(files.users, name);
  if (change.password) user.hash = newHash;
  if (change.role) user.role = *change.role;
  KeepAnAdmin(files.users);
  std::erase_if(files.grants, [&](const Grant& grant) { return grant.user == name && !grant.IsToken(); });
  for (Grant& grant : files.grants) grant.role = grant.user == name ? user.role : grant.role;
  Save(files);
}

void RemoveUser(const path& stateFolder, const std::string& name) {
  AccessFiles files(stateFolder);
  KnownUser(files.users, name);
  std::erase_if(files.users, [&](const User& user) { return user.name == name; });
  KeepAnAdmin(files.users);
  std::erase_if(files.grants, [&](const Grant& grant) { return grant.user == name; });
  Save(files);
}

void ReplaceHash(const path& stateFolder, const std::string& name, const std::string& before, const std::string& hash) {
  AccessFiles files(stateFolder);
  const auto isMeant = [&](const User& user) { return user.name == name && user.hash == before; };
  const auto found = std::find_if(files.users.begin(), files.users.end(), isMeant);
  if (found == files.users.end()) return;
  found->hash = hash;
  files.SaveUsers();
}

}  // namespace recorder
