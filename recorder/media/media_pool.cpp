#include "recorder/media/media_pool.h"

#include <mutex>
#include <stdexcept>
#include <utility>
#include <vector>

namespace recorder {
namespace {

using Process = std::unique_ptr<MediaProcess>;

class Pool {
 public:
  Process Take() {
    const std::lock_guard lock(mutex_);
    Process process;
    while (!waiting_.empty() && !process) {
      if (waiting_.back()->IsFresh()) process = std::move(waiting_.back());
      waiting_.pop_back();
    }
    return process;
  }

  void Keep(Process process) {
    const std::lock_guard lock(mutex_);
    waiting_.push_back(std::move(process));
  }

  void Dismiss() {
    const std::lock_guard lock(mutex_);
    for (const Process& process : waiting_) process->Dismiss();
  }

  void EndSpare() {
    const std::lock_guard lock(mutex_);
    if (waiting_.size() > 1) waiting_.resize(1);
  }

 private:
  std::mutex mutex_;
  std::vector<Process> waiting_;
};

Pool& ThePool() {
  static Pool pool;
  return pool;
}

thread_local std::weak_ptr<MediaProcess> borrowed;

void GiveBack(MediaProcess* process) {
  Process owner(process);
  if (owner->IsFresh() && owner->Close()) ThePool().Keep(std::move(owner));
}

}  // namespace

std::shared_ptr<MediaProcess> BorrowMedia() {
  Process process = ThePool().Take();
  if (!process) process = std::make_unique<MediaProcess>();
  std::shared_ptr<MediaProcess> shared(process.release(), GiveBack);
  borrowed = shared;
  return shared;
}

std::shared_ptr<MediaProcess> MediaOfThread() {
  std::shared_ptr<MediaProcess> shared = borrowed.lock();
  return shared && shared->IsFresh() ? shared : BorrowMedia();
}

void StartMedia() { ThePool().Keep(std::make_unique<MediaProcess>()); }

void DismissMedia() { ThePool().Dismiss(); }

void EndSpareMedia() { ThePool().EndSpare(); }

void RehearseMedia() {
  if (!MediaProcess().IsReady()) throw std::runtime_error("recorder-media cannot be used; the log says why");
}

}  // namespace recorder
