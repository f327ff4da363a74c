#include "recorder/ctl/progress.h"

#include <unistd.h>

#include <chrono>
#include <iostream>
#include <utility>

namespace recorder {

Progress::Progress(std::string work) : work_(std::move(work)) {
  if (isatty(STDERR_FILENO) != 0) counter_ = std::thread(&Progress::Count, this);
}

Progress::~Progress() {
  if (!counter_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    isOver_ = true;
  }
  ended_.notify_one();
  counter_.join();
}

void Progress::Count() {
  constexpr int kPatience = 3;
  constexpr char kEraseLine[] = "\r\x1b[K";  // ECMA-48, "EL"
  std::unique_lock lock(mutex_);
  int seconds = 0;
  while (!ended_.wait_for(lock, std::chrono::seconds(1), [this] { return isOver_; })) {
    if (++seconds >= kPatience) std::cerr << kEraseLine << "waiting for " << work_ << ", " << seconds << " s";
  }
  if (seconds >= kPatience) std::cerr << kEraseLine;
}

}  // namespace recorder
