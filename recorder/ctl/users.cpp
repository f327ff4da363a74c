#include "recorder/ctl/users.h"

#include <crypt.h>

#include <memory>
#include <sstream>
#include <stdexcept>

#include "recorder/utility/files.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/secrets.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

using std::filesystem::path;

/// bcrypt as htpasswd(1) writes it. The cost is the logarithm of the rounds; the server pays it with each login.
constexpr auto kHashMethod = "$2y$";
constexpr unsigned long kHashCost = 5;

std::string HashOf(const std::string& password) {
  const auto data = std::make_unique<crypt_data>();
  char setting[CRYPT_GENSALT_OUTPUT_SIZE];
  const bool hasSetting = crypt_gensalt_rn(kHashMethod, kHashCost, nullptr, 0, setting, sizeof(setting)) != nullptr;
  const char* hash = hasSetting ? crypt_rn(password.c_str(), setting, data.get(), sizeof(crypt_data)) : nullptr;
  if (hash == nullptr) throw std::runtime_error("this system cannot make a bcrypt hash");
  std::string result = hash;
  sodium_memzero(data.get(), sizeof(crypt_data));
  return result;
}

std::string NameOf(const std::string& line) { return line.substr(0, line.find(':')); }

std::vector<std::string> Lines(const path& stateFolder) {
  const path file = UsersFile(stateFolder);
  if (!std::filesystem::exists(file)) return {};
  std::istringstream text(ReadFile(file));
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);) {
    if (!line.empty()) lines.push_back(line);
  }
  return lines;
}

void Write(const path& stateFolder, const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + '\n';
  ReplaceFile(UsersFile(stateFolder), text);
}

void CheckName(const std::string& name) {
  if (name.empty() || name.front() == '#' || name.find(':') != std::string::npos || HoldsControls(name) ||
      !IsUtf8(name)) {
    throw std::runtime_error(
        "a user name is not empty, has no ':' and no control character, and does not begin with '#'");
  }
}

void CheckPassword(const std::string& password) {
  if (password.empty()) throw std::runtime_error("the password is empty");
  if (password.size() > kLongestUserPassword) {
    throw std::runtime_error("the password is longer than " + std::to_string(kLongestUserPassword) + " bytes");
  }
  if (HoldsControls(password)) throw std::runtime_error("the password holds a control character");
}

}  // namespace

path UsersFile(const path& stateFolder) { return stateFolder / "users"; }

std::vector<std::string> ListUsers(const path& stateFolder) {
  std::vector<std::string> names;
  for (const std::string& line : Lines(stateFolder)) names.push_back(NameOf(line));
  return names;
}

void StoreUser(const path& stateFolder, const std::string& name, const std::string& password) {
  CheckName(name);
  CheckPassword(password);
  const std::string entry = name + ':' + HashOf(password);
  const FileDescriptor lock = LockFolder(stateFolder);
  std::vector<std::string> lines = Lines(stateFolder);
  std::erase_if(lines, [&](const std::string& line) { return NameOf(line) == name; });
  lines.push_back(entry);
  Write(stateFolder, lines);
}

bool RemoveUser(const path& stateFolder, const std::string& name) {
  const FileDescriptor lock = LockFolder(stateFolder);
  std::vector<std::string> lines = Lines(stateFolder);
  if (std::erase_if(lines, [&](const std::string& line) { return NameOf(line) == name; }) == 0) return false;
  Write(stateFolder, lines);
  return true;
}

}  // namespace recorder
