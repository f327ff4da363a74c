#include "recorder/host/output_capture.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>
#include <tuple>

namespace recorder {

namespace {

/// The process's one, empty between two captures: to make one takes longer than most answers.
const FileDescriptor& MemoryFile() {
  static FileDescriptor file;
  if (!file) file = FileDescriptor(memfd_create("answer", MFD_CLOEXEC));
  return file;
}

}  // namespace

OutputCapture::OutputCapture() : savedOutput_(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3)) {
  std::fflush(stdout);
  if (!MemoryFile() || !savedOutput_ || dup2(MemoryFile().Get(), STDOUT_FILENO) < 0) {
    throw std::runtime_error("cannot make a memory file for the answer");
  }
}

OutputCapture::~OutputCapture() {
  std::fflush(stdout);
  dup2(savedOutput_.Get(), STDOUT_FILENO);
  const bool isEmpty = lseek(MemoryFile().Get(), 0, SEEK_CUR) == 0;
  if (isEmpty) return;
  std::ignore = ftruncate(MemoryFile().Get(), 0);
  lseek(MemoryFile().Get(), 0, SEEK_SET);
}

std::string OutputCapture::Take() {
  std::fflush(stdout);
  const off_t size = lseek(MemoryFile().Get(), 0, SEEK_END);
  std::string written(size > 0 ? static_cast<std::size_t>(size) : 0, '\0');
  std::size_t length = 0;
  while (length < written.size()) {
    const ssize_t count =
        pread(MemoryFile().Get(), written.data() + length, written.size() - length, static_cast<off_t>(length));
    if (count <= 0) throw std::runtime_error("cannot read the answer back");
    length += static_cast<std::size_t>(count);
  }
  return written;
}

}  // namespace recorder
