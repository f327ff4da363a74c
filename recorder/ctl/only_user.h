#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

#include "recorder/access/users.h"

namespace recorder {

/// The name of the recorder's one user. Throws std::runtime_error when there are several, or none.
inline std::string OnlyUser(const std::filesystem::path& stateFolder) {
  const std::vector<User> users = ReadUsers(stateFolder);
  if (users.empty()) throw std::runtime_error("there is no user: recorderctl user add NAME makes one");
  if (users.size() > 1) throw std::runtime_error("there are several users: name one by --user");
  return users.front().name;
}

}  // namespace recorder
