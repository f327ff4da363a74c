#include "recorder/host/output_capture.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>
#include <tuple>

namespace recorder {

namespace {

void Empty(const FileDescriptor& file) {
  std::ignore = ftruncate(file.Get(), 0);
  lseek(file.Get(), 0, SEEK_SET);
}

}  // namespace

OutputCapture::~OutputCapture() {
  if (!savedOutput_) return;
  std::fflush(stdout);
  dup2(savedOutput_.Get(), STDOUT_FILENO);
}

/// The call before may have left anything in the memory file, and another file at descriptor 1.
void OutputCapture::Start() {
  std::fflush(stdout);
  struct stat output {};
  const bool isThere =
      memory_ && fstat(STDOUT_FILENO, &output) == 0 && output.st_dev == device_ && output.st_ino == inode_;
  if (!isThere) PointOutputAtMemory();
  if (!isThere || output.st_size != 0) Empty(memory_);
}

void OutputCapture::PointOutputAtMemory() {
  if (!savedOutput_) savedOutput_ = FileDescriptor(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3));
  if (!memory_) memory_ = FileDescriptor(memfd_create("answer", MFD_CLOEXEC));
  struct stat memory {};
  if (!savedOutput_ || fstat(memory_.Get(), &memory) != 0 || dup2(memory_.Get(), STDOUT_FILENO) < 0) {
    throw std::runtime_error("cannot make a memory file for the answer");
  }
  device_ = memory.st_dev;
  inode_ = memory.st_ino;
}

std::string OutputCapture::Take() {
  std::fflush(stdout);
  const off_t size = lseek(memory_.Get(), 0, SEEK_END);
  std::string written(size > 0 ? static_cast<std::size_t>(size) : 0, '\0');
  std::size_t length = 0;
  while (length < written.size()) {
    const ssize_t count =
        pread(memory_.Get(), written.data() + length, written.size() - length, static_cast<off_t>(length));
    if (count <= 0) throw std::runtime_error("cannot read the answer back");
    length += static_cast<std::size_t>(count);
  }
  if (size > 0) Empty(memory_);
  return written;
}

}  // namespace recorder
