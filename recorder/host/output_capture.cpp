#include "recorder/host/output_capture.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>

namespace recorder {

OutputCapture::OutputCapture()
    : memoryFile_(memfd_create("answer", MFD_CLOEXEC)), savedOutput_(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3)) {
  std::fflush(stdout);
  if (!memoryFile_ || !savedOutput_ || dup2(memoryFile_.Get(), STDOUT_FILENO) < 0) {
    throw std::runtime_error("cannot make a memory file for the answer");
  }
}

OutputCapture::~OutputCapture() {
  std::fflush(stdout);
  dup2(savedOutput_.Get(), STDOUT_FILENO);
}

std::string OutputCapture::Take() {
  std::fflush(stdout);
  const off_t size = lseek(memoryFile_.Get(), 0, SEEK_END);
  std::string written(size > 0 ? static_cast<std::size_t>(size) : 0, '\0');
  std::size_t length = 0;
  while (length < written.size()) {
    const ssize_t count =
        pread(memoryFile_.Get(), written.data() + length, written.size() - length, static_cast<off_t>(length));
    if (count <= 0) throw std::runtime_error("cannot read the answer back");
    length += static_cast<std::size_t>(count);
  }
  return written;
}

}  // namespace recorder
