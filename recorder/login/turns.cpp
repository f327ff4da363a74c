#include "recorder/login/turns.h"

namespace recorder {

namespace {

constexpr std::size_t kMostWaiting = 8;

}  // namespace

std::optional<Turns::Turn> Turns::Take(const std::string& purpose) {
  std::unique_lock lock(mutex_);
  if (isTaken_) {
    if (!waiting_.contains(purpose) && waiting_.size() >= kMostWaiting) return std::nullopt;
    ++waiting_[purpose];
    isFree_.wait(lock, [&] { return !isTaken_; });
    if (--waiting_[purpose] == 0) waiting_.erase(purpose);
  }
  isTaken_ = true;
  return Turn(*this);
}

void Turns::End() {
  const std::lock_guard lock(mutex_);
  isTaken_ = false;
  isFree_.notify_one();
}

}  // namespace recorder
