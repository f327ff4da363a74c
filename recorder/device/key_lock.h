#pragma once

#include <chrono>
#include <string>

namespace recorder {

/// Holds a key, which one holder in this process has at a time, until destruction. Any thread.
class KeyLock {
 public:
  /// Waits for the key until `deadline`; false as a bool when it was not to be had.
  KeyLock(std::string key, std::chrono::steady_clock::time_point deadline);
  ~KeyLock();
  KeyLock(const KeyLock&) = delete;
  KeyLock& operator=(const KeyLock&) = delete;

  explicit operator bool() const { return isHeld_; }

 private:
  const std::string key_;
  bool isHeld_;
};

}  // namespace recorder
