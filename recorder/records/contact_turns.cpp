#include "recorder/records/contact_turns.h"

#include <fcntl.h>

#include <string>

#include "recorder/utility/file_lock.h"
#include "recorder/utility/state_files.h"
#include "recorder/utility/text.h"

namespace recorder {

off_t ContactPlace(const CameraRecord& camera) {
  return LockByteOf(NormalizedHost(camera.host) + ' ' + std::to_string(camera.port));
}

ContactTurns::ContactTurns(const std::filesystem::path& stateFolder) : file_(OpenLocks(stateFolder / kContactsLock)) {}

bool ContactTurns::Take(const CameraRecord& camera) {
  const off_t place = ContactPlace(camera);
  if (file_ && TryLock(file_, F_WRLCK, place, 1)) {
    taken_[camera.id] = place;
  } else if (file_ && IsHeldByAnother() && heldBack_.insert(camera.id).second) {
    return false;
  }
  heldBack_.erase(camera.id);
  return true;
}

void ContactTurns::GiveBack(int id) {
  if (const auto taken = taken_.extract(id)) TryLock(file_, F_UNLCK, taken.mapped(), 1);
}

}  // namespace recorder
