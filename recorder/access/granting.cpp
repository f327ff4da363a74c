#include "recorder/access/granting.h"

#include <algorithm>
#include <utility>

#include "recorder/access/access_files.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/secrets.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

using std::filesystem::path;
using ErrorKind = AccessError::Kind;
using Kind = Grant::Kind;

constexpr std::int64_t kLinkLifetime = 600;   // seconds
constexpr std::int64_t kUseNotedEach = 1800;  // seconds

std::string MakeId() { return HashOfSecret(MakeSecret()).substr(0, 16); }

NewGrant MakeGrant(Kind kind, const std::string& user, Role role, const std::string& label, std::int64_t until) {
  std::string secret = MakeSecret();
  const std::int64_t now = SecondsNow();
  std::string hash = HashOfSecret(secret);
  return {std::move(secret), {kind, std::move(hash), MakeId(), user, role, now, now, until, label}};
}

void Store(AccessFiles& files, const Grant& grant) {
  files.grants.push_back(grant);
  files.SaveGrants();
}

auto IsOf(Kind kind, const std::string& user) {
  return [kind, &user](const Grant& grant) { return grant.kind == kind && grant.user == user; };
}

void MakeRoom(std::vector<Grant>& grants, Kind kind, const std::string& user) {
  const auto isOf = IsOf(kind, user);
  if (std::count_if(grants.begin(), grants.end(), isOf) < kMostGrantsOfAUser) return;
  grants.erase(std::min_element(grants.begin(), grants.end(), [&](const Grant& left, const Grant& right) {
    return std::pair(!isOf(left), left.lastUsed) < std::pair(!isOf(right), right.lastUsed);
  }));
}

void CheckTokenName(const AccessFiles& files, const std::string& user, const std::string& name) {
  if (name.empty() || name.size() > kLongestUserName || HoldsControls(name) || !IsUtf8(name)) {
    throw AccessError(ErrorKind::kInvalid,
                      "a token's name is not empty, has at most 128 bytes and no control character");
  }
  for (const Grant& grant : files.grants) {
    if (grant.IsToken() && grant.label == name) {
      throw AccessError(ErrorKind::kConflict, "there is a token " + name + " already");
    }
  }
  if (std::count_if(files.grants.begin(), files.grants.end(), IsOf(Kind::kToken, user)) >= kMostGrantsOfAUser) {
    throw AccessError(ErrorKind::kConflict, user + " has as many tokens as one may have");
  }
}

}  // namespace

NewGrant StartSession(const path& stateFolder, const std::string& user, const std::string& address, bool isToStay) {
  AccessFiles files(stateFolder);
  const std::int64_t until = SecondsNow() + (isToStay ? kLongestSession : kIdleSession);
  NewGrant made = MakeGrant(Kind::kSession, user, KnownUser(files.users, user).role, address, until);
  MakeRoom(files.grants, Kind::kSession, user);
  Store(files, made.grant);
  return made;
}

NewGrant AddToken(const path& stateFolder, const std::string& user, const std::string& name, std::int64_t until) {
  AccessFiles files(stateFolder);
  NewGrant made = MakeGrant(Kind::kToken, user, KnownUser(files.users, user).role, name, until);
  CheckTokenName(files, user, name);
  if (!made.grant.IsValid(SecondsNow())) throw AccessError(ErrorKind::kInvalid, "the token's end is over already");
  Store(files, made.grant);
  return made;
}

NewGrant AddLink(const path& stateFolder, const std::string& user) {
  AccessFiles files(stateFolder);
  if (user.empty() && !files.users.empty()) {
    throw AccessError(ErrorKind::kConflict, "there are users: a link signs one of them in");
  }
  const Role role = user.empty() ? Role::kAdmin : KnownUser(files.users, user).role;
  NewGrant made = MakeGrant(Kind::kLink, user, role, "", SecondsNow() + kLinkLifetime);
  MakeRoom(files.grants, Kind::kLink, user);
  Store(files, made.grant);
  return made;
}

std::string UseLink(const path& stateFolder, const std::string& secret) {
  const std::string hash = HashOfSecret(secret);
  AccessFiles files(stateFolder);
  const auto found = std::find_if(files.grants.begin(), files.grants.end(),
                                  [&](const Grant& grant) { return grant.kind == Kind::kLink && grant.hash == hash; });
  if (found == files.grants.end() || (found->user.empty() && !files.users.empty())) {
    throw AccessError(ErrorKind::kMissing, "this link was used already, or is too old");
  }
  std::string user = found->user;
  files.grants.erase(found);
  files.SaveGrants();
  return user;
}

std::size_t EndGrants(const path& stateFolder, const std::function<bool(const Grant&)>& isMeant) {
  AccessFiles files(stateFolder);
  const std::size_t count = std::erase_if(files.grants, isMeant);
  if (count > 0) files.SaveGrants();
  return count;
}

void NoteUse(const path& stateFolder, const std::string& id) {
  AccessFiles files(stateFolder);
  const std::int64_t now = SecondsNow();
  const auto found =
      std::find_if(files.grants.begin(), files.grants.end(), [&](const Grant& grant) { return grant.id == id; });
  if (found == files.grants.end() || !IsUseToBeNoted(*found, now)) return;
  found->lastUsed = now;
  const std::int64_t end = found->created + kLongestSession;
  if (found->kind == Kind::kSession && found->until < end) found->until = std::min(end, now + kIdleSession);
  files.SaveGrants();
}

bool IsUseToBeNoted(const Grant& grant, std::int64_t now) { return now - grant.lastUsed >= kUseNotedEach; }

}  // namespace recorder
