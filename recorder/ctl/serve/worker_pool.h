#pragma once

#include <filesystem>
#include <vector>

#include "recorder/utility/child_process.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/counts.h"
#include "recorder/utility/handle.h"

namespace recorder {

/// Request processes that share one listening socket: a request waits for whichever is free first, and one that dies
/// costs the request at hand alone, since what waits stays in the socket. They end with this object, and with this
/// process however it ends. One thread.
class WorkerPool {
 public:
  /// Listens at `socketFile` and starts `count` processes of `program`, which finds the socket as its standard input
  /// (FastCGI 1.0, section 2.2), and itself in `entries`, which outlives the pool. Their ends are counted as those of
  /// `counted`. Throws std::system_error.
  WorkerPool(const std::filesystem::path& socketFile, std::filesystem::path program, int count, PoolCount& entries,
             Program counted);
  ~WorkerPool();
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  /// Starts a new process for each that has ended; call now and then, at best on SIGCHLD.
  void Replenish();

 private:
  struct Worker {
    ChildProcess process;
    Clock::time_point start;
    WorkerCount* entry = nullptr;
  };
  void Start(Worker& worker);
  void Forget(const Worker& worker) const;

  const std::filesystem::path program_;
  const Program counted_;
  const FileDescriptor socket_;
  std::vector<Worker> workers_;
};

}  // namespace recorder
