#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "recorder/access/role.h"

namespace recorder {

/// What lets somebody in without a password: whoever knows its secret. Times are seconds since 1970-01-01 00:00 UTC.
struct Grant {
  enum class Kind { kSession, kToken, kLink };
  Kind kind = Kind::kSession;
  std::string hash;  ///< of the secret, which is kept nowhere; see HashOfSecret
  std::string id;    ///< names it to people and processes, and is no secret
  std::string user;  ///< "": a link for whoever makes the first user
  Role role = Role::kUser;
  std::int64_t created = 0;
  std::int64_t lastUsed = 0;  ///< of a session or token, within half an hour
  std::int64_t until = 0;     ///< when it ends; 0: with its user
  std::string label;          ///< of a token its name, else the address that it was made from

  bool IsToken() const { return kind == Kind::kToken; }
  bool IsValid(std::int64_t now) const { return until == 0 || now < until; }
};

/// The file with all grants: a line each, its members separated by tabs, mode 0600. It holds no secret that would let
/// its reader in.
std::filesystem::path GrantsFile(const std::filesystem::path& stateFolder);

/// Lines that cannot be read are left out. Throws std::system_error that names the file. Any thread and process.
std::vector<Grant> ReadGrants(const std::filesystem::path& stateFolder);

/// What the file holds.
std::string ToText(const std::vector<Grant>& grants);

/// 32 random bytes in base64url (RFC 4648 section 5): 43 letters.
std::string MakeSecret();

/// BLAKE2b in 64 hexadecimal digits: a secret that is random needs no slow hash.
std::string HashOfSecret(std::string_view secret);

}  // namespace recorder
