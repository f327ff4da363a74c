#include "recorder/login/late_answers.h"

#include <chrono>
#include <utility>

namespace recorder {

namespace {

constexpr std::chrono::seconds kDelay{1};

}  // namespace

void LateAnswers::Add(FastCgiRequest request, std::string answer) {
  const std::lock_guard lock(mutex_);
  late_.push_back({std::move(request), std::move(answer), Clock::now() + kDelay});
  isThere_.notify_one();
}

void LateAnswers::SendAll(const std::stop_token& stop) {
  std::unique_lock lock(mutex_);
  while (isThere_.wait(lock, stop, [&] { return !late_.empty(); })) {
    const Late next = std::move(late_.front());
    late_.pop_front();
    lock.unlock();
    std::this_thread::sleep_until(next.due);
    Finish(*next.request, next.answer);
    lock.lock();
  }
}

}  // namespace recorder
