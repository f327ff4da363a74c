#pragma once

#include <filesystem>

#include "recorder/utility/service.h"

namespace recorder {

/// Exchanges all of the recorder's own in a state folder, all or nothing, also when the process is killed or the power
/// fails. The folder itself stays: it may be the mount point of a volume, or in a folder where its owner may make
/// nothing. So does what is somebody else's.
///
/// What is new is built in a folder within it. Commit() then renames that folder, which decides, and moves the old
/// files out of the way and the new ones in. Whoever is interrupted there leaves the rest to FinishStateExchange().
/// Owner:   keeps the service from running while it lives.
/// Failure: throws std::runtime_error when the service runs, std::system_error that names the file.
class StateExchange {
 public:
  explicit StateExchange(std::filesystem::path stateFolder);
  ~StateExchange();
  StateExchange(const StateExchange&) = delete;
  StateExchange& operator=(const StateExchange&) = delete;

  /// An empty folder, to be filled with what is to stand in the state folder. One that is not committed goes with
  /// this object, or when the next exchange begins.
  std::filesystem::path NewState() const;

  /// Puts it in place. Returns the folder, within the state folder, that holds what was there before; "" when that was
  /// nothing. It does not hold runs: their passwords are wiped, or where that fails removed, and logged. Throws
  /// std::runtime_error, and nothing has changed, when something of it cannot be moved.
  std::filesystem::path Commit() const;

 private:
  std::filesystem::path stateFolder_;
  ServicePause pause_;
};

/// Ends an exchange that was interrupted when it had been decided; mostly there is none. Call it before anything in the
/// state folder is read. Throws like StateExchange. Any process.
void FinishStateExchange(const std::filesystem::path& stateFolder);

}  // namespace recorder
