#include "recorder/device/camera_lock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <chrono>
#include <thread>

namespace recorder {

CameraLock::CameraLock(const std::filesystem::path& path, Clock::time_point deadline)
    : file_(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
  constexpr std::chrono::milliseconds kPause{10};
  while (file_ && flock(file_.Get(), LOCK_EX | LOCK_NB) != 0) {
    isHeld_ = Clock::now() < deadline;
    if (!isHeld_) return;
    std::this_thread::sleep_for(kPause);
  }
}

}  // namespace recorder
