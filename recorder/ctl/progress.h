#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace recorder {

/// Tells whoever sits at a terminal that work goes on: from the third second on, standard error has one line that
/// counts the seconds. Nothing is written when standard error is no terminal. The line is gone when the object is.
class Progress {
 public:
  /// `work` is what is waited for, such as "200 cameras".
  explicit Progress(std::string work);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

 private:
  void Count();

  std::string work_;
  std::mutex mutex_;
  std::condition_variable ended_;
  bool isOver_ = false;
  std::thread counter_;
};

}  // namespace recorder
