#pragma once

#include <string>

#include "recorder/utility/handle.h"

namespace recorder {

/// Points the process's standard output at a memory file for as long as it lives, as a module may write a raw answer
/// there. One at a time in a process, whose descriptor 1 must be open. Throws std::runtime_error when the memory file
/// cannot be had.
class OutputCapture {
 public:
  OutputCapture();
  ~OutputCapture();
  OutputCapture(const OutputCapture&) = delete;
  OutputCapture& operator=(const OutputCapture&) = delete;

  /// Flushes standard output and returns all that was written.
  std::string Take();

 private:
  FileDescriptor savedOutput_;
};

}  // namespace recorder
