#pragma once

#include <sys/types.h>

#include <filesystem>
#include <set>
#include <unordered_map>

#include "recorder/records/camera_record.h"
#include "recorder/utility/handle.h"

namespace recorder {

// Some cameras let in one at a time. So whoever contacts a stored one through /recorder/1, and recorder-watch for its
// checks, lock the camera's byte of a file, kContactsLock. The former share it, since somebody waits for each of them;
// recorder-watch has it alone. recorderctl and /api take no turn: what they ask is sent at once. For runs see
// BusyHosts.

/// The byte of all stored cameras at that host and port.
off_t ContactPlace(const CameraRecord& camera);

/// The turns of recorder-watch, which can wait, as others cannot. Thread: one.
class ContactTurns {
 public:
  explicit ContactTurns(const std::filesystem::path& stateFolder);

  /// Takes the turn to check a camera, until GiveBack of its id. False when somebody contacts it at this moment, but
  /// not twice one after the other: a page that shows pictures all day must not keep it from being checked.
  bool Take(const CameraRecord& camera);
  void GiveBack(int id);

 private:
  FileDescriptor file_;  // nobody is held back where it lacks
  std::unordered_map<int, off_t> taken_;
  std::set<int> heldBack_;
};

}  // namespace recorder
