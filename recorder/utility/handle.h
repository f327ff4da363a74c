#pragma once

#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <utility>

// Owners of C handles, so that each kind of handle is one alias where it is used.

namespace recorder {

/// Deleter of a std::unique_ptr whose handle is given back by the function `Free`.
template <auto Free>
struct Deleter {
  template <class T>
  void operator()(T* handle) const noexcept {
    Free(handle);
  }
};

/// Bytes from malloc.
using MallocBytes = std::unique_ptr<unsigned char, Deleter<std::free>>;

/// Owns one file descriptor, or none.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  ~FileDescriptor() { Close(); }
  FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    if (this != &other) {
      Close();
      descriptor_ = std::exchange(other.descriptor_, -1);
    }
    return *this;
  }

  explicit operator bool() const { return descriptor_ >= 0; }
  int Get() const { return descriptor_; }

  /// Hands the descriptor over to the caller.
  int Release() { return std::exchange(descriptor_, -1); }

 private:
  void Close() {
    if (descriptor_ >= 0) close(descriptor_);
    descriptor_ = -1;
  }

  int descriptor_ = -1;
};

}  // namespace recorder
