#pragma once

#include <sys/types.h>

#include <string>

#include "recorder/utility/handle.h"

namespace recorder {

/// Takes what a module writes to the process's standard output, as a module may write a raw answer there: from the
/// first Start on until this object's end, standard output is a memory file. One at a time in a process, whose
/// descriptor 1 must be open. To keep one from call to call is cheaper than to make it anew.
class OutputCapture {
 public:
  OutputCapture() = default;
  ~OutputCapture();
  OutputCapture(const OutputCapture&) = delete;
  OutputCapture& operator=(const OutputCapture&) = delete;

  /// Begins with nothing, whatever was written before. Throws std::runtime_error when the memory file cannot be had;
  /// the next call tries again.
  void Start();

  /// Flushes standard output and returns all that was written since Start.
  std::string Take();

 private:
  void PointOutputAtMemory();

  FileDescriptor memory_;
  dev_t device_ = 0;  // of the memory file, and its number there
  ino_t inode_ = 0;
  FileDescriptor savedOutput_;
};

}  // namespace recorder
