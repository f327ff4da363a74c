#pragma once

#include <filesystem>

#include "recorder/utility/handle.h"

namespace recorder {

/// The server's own folder: mode 0700, since whoever can write to the workers' socket can claim a login. Its short path
/// suits a socket, and nothing of the user's own paths has to be quoted in the server's configuration. It goes with the
/// object; one that a server left behind which was killed goes when the next one is made, since requests may lie there
/// that hold passwords. Throws std::runtime_error when it cannot be made.
class RunFolder {
 public:
  RunFolder();
  ~RunFolder();
  RunFolder(const RunFolder&) = delete;
  RunFolder& operator=(const RunFolder&) = delete;

  const std::filesystem::path& Path() const { return folder_; }
  std::filesystem::path operator/(const char* name) const { return folder_ / name; }

 private:
  std::filesystem::path folder_;
  FileDescriptor lock_;
};

}  // namespace recorder
