#pragma once

#include <filesystem>

#include "recorder/utility/files.h"

namespace recorder {

/// Tells for the price of two system calls that nobody has written to the records. An open connection would tell so,
/// too, but the process that watches makes copies of itself, which must not have one. One thread.
class RecordsNews {
 public:
  explicit RecordsNews(const std::filesystem::path& stateFolder);

  /// True when they may have been written to since the call before; the first time, always.
  bool AreThere();

 private:
  std::filesystem::path file_;
  std::filesystem::path log_;
  FileStamp fileStamp_;
  FileStamp logStamp_;
  bool isFresh_ = true;  // they were written to so recently that a stamp may not tell of the next time
};

}  // namespace recorder
