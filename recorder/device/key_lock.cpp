#include "recorder/device/key_lock.h"

#include <condition_variable>
#include <mutex>
#include <set>
#include <utility>

namespace recorder {
namespace {

struct Keys {
  std::mutex mutex;
  std::condition_variable returned;
  std::set<std::string> held;
};

Keys& AllKeys() {
  static Keys keys;
  return keys;
}

}  // namespace

KeyLock::KeyLock(std::string key, std::chrono::steady_clock::time_point deadline) : key_(std::move(key)) {
  Keys& keys = AllKeys();
  std::unique_lock lock(keys.mutex);
  isHeld_ = keys.returned.wait_until(lock, deadline, [&] { return !keys.held.contains(key_); });
  if (isHeld_) keys.held.insert(key_);
}

KeyLock::~KeyLock() {
  if (!isHeld_) return;
  Keys& keys = AllKeys();
  {
    const std::lock_guard lock(keys.mutex);
    keys.held.erase(key_);
  }
  keys.returned.notify_all();
}

}  // namespace recorder
