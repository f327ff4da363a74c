#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include "recorder/access/access_error.h"
#include "recorder/access/grant.h"

namespace recorder {

// Sessions, tokens and links come and go. All functions want a state folder that exists, may be called by any thread
// and process, and throw std::system_error that names the file.

/// A grant just made, with its secret, which is told this once.
struct NewGrant {
  std::string secret;
  Grant grant;
};

/// Seconds until a session ends: without use, and at the longest.
inline constexpr std::int64_t kIdleSession = std::int64_t{12} * 3600;
inline constexpr std::int64_t kLongestSession = std::int64_t{30} * 24 * 3600;

/// A session of `user` from `address`. It ends after 12 hours without use or, when it is to stay, after 30 days. A user
/// has 100 at most: the one that was not used for longest goes. Throws AccessError when there is no such user.
NewGrant StartSession(const std::filesystem::path& stateFolder, const std::string& user, const std::string& address,
                      bool isToStay);

/// A token of `user` for scripts, under a name that no other token has; `until` 0: without an end. Throws AccessError.
NewGrant AddToken(const std::filesystem::path& stateFolder, const std::string& user, const std::string& name,
                  std::int64_t until);

/// A link that signs `user` in once within 10 minutes; for "", whoever makes the first user. Throws AccessError when
/// there is no such user, or for "" when there is one already.
NewGrant AddLink(const std::filesystem::path& stateFolder, const std::string& user);

/// The user that a link signs in, which is used up then. Throws AccessError when it is none, or no longer.
std::string UseLink(const std::filesystem::path& stateFolder, const std::string& secret);

/// How many of the grants ended for which `isMeant` holds.
std::size_t EndGrants(const std::filesystem::path& stateFolder, const std::function<bool(const Grant&)>& isMeant);

/// Notes that a session or token was used now; a session without use for 12 hours ends.
void NoteUse(const std::filesystem::path& stateFolder, const std::string& id);

/// True when the use that is noted is so old that NoteUse should be called.
bool IsUseToBeNoted(const Grant& grant, std::int64_t now);

}  // namespace recorder
