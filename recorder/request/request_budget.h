#pragma once

#include <atomic>

namespace recorder {

/// How many requests may still go to cameras from all RequestScopes that share it. Any thread.
class RequestBudget {
 public:
  explicit RequestBudget(int most) : most_(most) {}

  /// Counts one request that is about to be sent. False, and nothing is counted, when all are spent.
  bool Take() {
    int taken = taken_;
    while (taken < most_) {
      if (taken_.compare_exchange_weak(taken, taken + 1)) return true;
    }
    return false;
  }

  int Taken() const { return taken_; }
  int Left() const { return most_ - taken_; }

 private:
  const int most_;
  std::atomic<int> taken_{0};
};

}  // namespace recorder
