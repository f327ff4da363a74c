#include "recorder/access/grant_list.h"

#include <utility>

#include "recorder/utility/clock.h"

namespace recorder {

std::optional<Grant> GrantList::Find(Grant::Kind kind, std::string_view secret) {
  const std::string hash = HashOfSecret(secret);
  const std::lock_guard lock(mutex_);
  Refresh();
  const auto found = grants_.find(hash);
  const bool isMeant = found != grants_.end() && found->second.kind == kind && found->second.IsValid(SecondsNow());
  return isMeant ? std::optional(found->second) : std::nullopt;
}

void GrantList::Refresh() {
  if (!watch_.MayHaveChanged() && stamp_) return;
  const FileStamp stamp = StampOf(file_);  // before it is read: a change meanwhile is seen next time
  if (stamp_ == stamp) return;
  grants_.clear();
  stamp_.reset();
  for (Grant& grant : ReadGrants(stateFolder_)) grants_.emplace(grant.hash, std::move(grant));
  stamp_ = stamp;
}

}  // namespace recorder
