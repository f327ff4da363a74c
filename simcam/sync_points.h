#pragma once

#include <map>
#include <mutex>
#include <string>

namespace simcam {

/// For which streams of a camera a key frame was asked over a web service. Any thread.
class SyncPoints {
 public:
  void Ask(const std::string& path) {
    const std::scoped_lock lock(mutex_);
    ++counts_[path];
  }

  /// How often for the stream at `path`.
  [[nodiscard]] int Count(const std::string& path) const {
    const std::scoped_lock lock(mutex_);
    const auto found = counts_.find(path);
    return found == counts_.end() ? 0 : found->second;
  }

 private:
  mutable std::mutex mutex_;
  std::map<std::string, int> counts_;
};

}  // namespace simcam
