#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>

#include "recorder/utility/handle.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// The last check of a stored camera that was watched, and the last answer. Times are in seconds since 1970.
struct Attempt {
  int revision = 0;                   ///< of the record that was checked last
  std::int64_t at = 0;                ///< when that began
  bool isAnswered = false;            ///< whether it has its answer. If not, it goes on, or its process has ended
  std::int64_t answered = 0;          ///< when the last answer came, of that check or one before; 0: none ever did
  std::chrono::milliseconds time{0};  ///< that this answer took
  std::optional<Outcome> result = std::nullopt;  ///< what it came to
  std::int64_t lastSuccess = 0;                  ///< when the last answer came that was kOk; 0: none was

  bool operator==(const Attempt&) const = default;
};

/// The file watch.attempts in the state folder (mode 0600): of each watched camera the last check, in a place of its
/// own. It is no part of the records, since these would be written to with every check.
///
/// Thread:  one writer (recorder-watch, by its ServiceLock); any number of readers of any processes.
/// Time:    a change is one system call. It outlives this process however that ends, but not always a power failure.
/// Failure: throws std::system_error that names the file.
class Attempts {
 public:
  /// Opens the file, and makes it if it is missing or of another kind.
  explicit Attempts(const std::filesystem::path& stateFolder);

  void Write(int cameraId, const Attempt& attempt);

  /// Tells when the check that is due first was or is due, in seconds since 1970; 0: there is none. A new object has
  /// told that there is none.
  void TellFirstDue(std::int64_t due);

  /// What was told last in `stateFolder`.
  static std::int64_t FirstDue(const std::filesystem::path& stateFolder);

  /// All that are kept in `stateFolder`, by camera; none when there is no such file.
  static std::map<int, Attempt> Read(const std::filesystem::path& stateFolder);

  /// That of one camera; nothing when none is kept.
  static std::optional<Attempt> Of(const std::filesystem::path& stateFolder, int cameraId);

 private:
  std::filesystem::path path_;
  FileDescriptor file_;
};

}  // namespace recorder
