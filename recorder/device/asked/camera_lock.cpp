#include "recorder/device/asked/camera_lock.h"

#include <chrono>
#include <thread>

#include "recorder/utility/file_lock.h"

namespace recorder {

CameraLock::CameraLock(const std::filesystem::path& path, off_t camera, Clock::time_point deadline, short type)
    : file_(OpenLocks(path)) {
  constexpr std::chrono::milliseconds kPause{10};
  while (file_ && !TryLock(file_, type, camera, 1) && IsHeldByAnother()) {
    isHeld_ = Clock::now() < deadline;
    if (!isHeld_) return;
    std::this_thread::sleep_for(kPause);
  }
}

}  // namespace recorder
