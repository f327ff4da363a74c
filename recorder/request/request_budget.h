#pragma once

#include <atomic>

namespace recorder {

/// How many requests may still go to cameras from all RequestScopes that share it. Any thread.
class RequestBudget {
 public:
  /// `beyond`: where more are taken from when all are spent; null for nowhere.
  explicit RequestBudget(int most, RequestBudget* beyond = nullptr) : most_(most), beyond_(beyond) {}

  /// Counts one request that is about to be sent. False, and nothing is counted, when all are spent.
  bool Take() {
    int taken = taken_;
    while (taken < most_) {
      if (taken_.compare_exchange_weak(taken, taken + 1)) return true;
    }
    hasRefused_ = beyond_ == nullptr || !beyond_->Take();
    return !hasRefused_;
  }

  /// True when the last request could not be sent.
  bool HasRefused() const { return hasRefused_; }

  /// Those of `beyond` are not in it.
  int Taken() const { return taken_; }
  int Left() const { return most_ - taken_; }

 private:
  const int most_;
  RequestBudget* const beyond_;
  std::atomic<bool> hasRefused_{false};
  std::atomic<int> taken_{0};
};

}  // namespace recorder
