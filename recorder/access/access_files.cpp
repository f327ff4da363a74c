#include "recorder/access/access_files.h"

#include <algorithm>
#include <utility>

#include "recorder/utility/clock.h"

namespace recorder {

AccessFiles::AccessFiles(std::filesystem::path stateFolder)
    : stateFolder_(std::move(stateFolder)), lock_(LockFolder(stateFolder_)) {
  users = ReadUsers(stateFolder_);
  grants = ReadGrants(stateFolder_);
  std::erase_if(grants, [now = SecondsNow()](const Grant& grant) { return !grant.IsValid(now); });
}

void AccessFiles::SaveUsers() const {
  std::string text;
  for (const User& user : users) text += user.name + ':' + user.hash + ':' + std::string(NameOf(user.role)) + '\n';
  ReplaceFile(UsersFile(stateFolder_), text);
}

void AccessFiles::SaveGrants() const { ReplaceFile(GrantsFile(stateFolder_), ToText(grants)); }

}  // namespace recorder
