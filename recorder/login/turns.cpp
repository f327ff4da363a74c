#include "recorder/login/turns.h"

namespace recorder {

namespace {

constexpr std::size_t kMostPurposes = 8;
constexpr int kMostWaiting = 12;

}  // namespace

std::optional<Turns::Turn> Turns::Take(const std::string& purpose) {
  std::unique_lock lock(mutex_);
  if (isTaken_) {
    const bool isNew = !waiting_.contains(purpose);
    if (allWaiting_ >= kMostWaiting || (isNew && waiting_.size() >= kMostPurposes)) return std::nullopt;
    ++allWaiting_;
    ++waiting_[purpose];
    isFree_.wait(lock, [&] { return !isTaken_; });
    --allWaiting_;
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
