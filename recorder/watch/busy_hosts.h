#pragma once

#include <string>
#include <unordered_set>

namespace recorder {

/// The hosts (see NormalizedHost) that somebody of this process contacts now, so that nobody else does. Some cameras
/// let in one at a time. One thread.
class BusyHosts {
 public:
  bool IsBusy(const std::string& host) const { return hosts_.contains(host); }
  void Take(const std::string& host) { hosts_.insert(host); }
  void GiveBack(const std::string& host) { hosts_.erase(host); }

 private:
  std::unordered_set<std::string> hosts_;
};

}  // namespace recorder
