#pragma once

#include <filesystem>
#include <vector>

#include "recorder/access/grant.h"
#include "recorder/access/users.h"
#include "recorder/utility/files.h"

namespace recorder {

/// Users and grants while nobody else changes them: from reading to writing the folder is locked. One thread.
class AccessFiles {
 public:
  /// Waits for the lock. Throws std::system_error that names the file.
  explicit AccessFiles(std::filesystem::path stateFolder);

  std::vector<User> users;
  std::vector<Grant> grants;  ///< those that are over are left out

  void SaveUsers() const;
  void SaveGrants() const;

 private:
  std::filesystem::path stateFolder_;
  FileDescriptor lock_;
};

}  // namespace recorder
