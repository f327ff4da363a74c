#include "recorder/device/asked/camera_lock.h"

#include <fcntl.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace recorder {
namespace {

bool IsHeldByAnother(int error) { return error == EAGAIN || error == EACCES; }

}  // namespace

CameraLock::CameraLock(const std::filesystem::path& path, off_t camera, Clock::time_point deadline)
    : file_(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
  constexpr std::chrono::milliseconds kPause{10};
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  lock.l_start = camera;
  lock.l_len = 1;
  while (file_ && fcntl(file_.Get(), F_OFD_SETLK, &lock) != 0 && IsHeldByAnother(errno)) {
    isHeld_ = Clock::now() < deadline;
    if (!isHeld_) return;
    std::this_thread::sleep_for(kPause);
  }
}

}  // namespace recorder
