#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace recorder {

/// The web server's logins: lines "name:hash" as mod_authn_file and htpasswd(1) know them, mode 0600.
std::filesystem::path UsersFile(const std::filesystem::path& stateFolder);

/// Names of all users, in the order of the file. These functions want a folder that exists, and throw std::system_error
/// that names the file.
std::vector<std::string> ListUsers(const std::filesystem::path& stateFolder);

/// Stores a user with a bcrypt hash of the password, in the place of one of the same name. Throws std::runtime_error
/// for a name or password that the file cannot hold.
void StoreUser(const std::filesystem::path& stateFolder, const std::string& name, const std::string& password);

/// False when there is no such user.
bool RemoveUser(const std::filesystem::path& stateFolder, const std::string& name);

}  // namespace recorder
