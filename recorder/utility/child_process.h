#pragma once

#include <sys/types.h>

#include <functional>

namespace recorder {

/// A program that runs beside this one and ends with the object, and with this process however it ends. What it starts
/// is in its process group, and ends with it. Movable; one thread.
class ChildProcess {
 public:
  ChildProcess() = default;

  /// Runs `execute` in a new process, which has no signal blocked; it replaces itself by a program, and ends with
  /// status 127 when that fails. Without a new process, which is logged, the child counts as ended.
  explicit ChildProcess(const std::function<void()>& execute);
  ChildProcess(ChildProcess&& other) noexcept;
  ChildProcess& operator=(ChildProcess&& other) noexcept;
  ~ChildProcess();

  /// Its number; -1 when it has ended.
  pid_t Id() const { return process_; }

  /// True when it has ended of its own accord, or never started.
  bool HasEnded();

  /// Asks it to end, without waiting, which the destructor does.
  void Terminate() const;

 private:
  pid_t process_ = -1;
};

}  // namespace recorder
