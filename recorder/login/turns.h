#pragma once

#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace recorder {

/// Lets one thread at a time work, and few wait. Any thread.
class Turns {
 public:
  /// The right to work, until it ends.
  class Turn {
   public:
    explicit Turn(Turns& turns) : turns_(&turns) {}
    Turn(Turn&& other) noexcept : turns_(std::exchange(other.turns_, nullptr)) {}
    Turn& operator=(Turn&&) = delete;
    ~Turn() {
      if (turns_ != nullptr) turns_->End();
    }

   private:
    Turns* turns_;
  };

  /// Waits for a turn; nothing, at once, when eight others wait. Those who wait for the same `purpose` count as one,
  /// since it is done for all when the first is done, but no more than twelve wait at all.
  std::optional<Turn> Take(const std::string& purpose);

 private:
  void End();

  std::mutex mutex_;
  std::condition_variable isFree_;
  bool isTaken_ = false;
  int allWaiting_ = 0;
  std::map<std::string, int> waiting_;  // how many, by purpose
};

}  // namespace recorder
