#pragma once

#include <filesystem>
#include <string>

#include "recorder/utility/handle.h"

namespace recorder {

/// The variable of the environment that names the socket for notes of use.
inline constexpr char kUseSocketVariable[] = "RECORDER_USE_SOCKET";

/// Takes notes that a session or token is in use from processes that may not write them down themselves: a datagram
/// each, with its id. One thread.
class UseNotes {
 public:
  /// Listens at `socketFile`, also where another process did before. Throws std::system_error.
  explicit UseNotes(const std::filesystem::path& socketFile);

  /// The id in the next note; waits for it.
  std::string Next() const;

 private:
  FileDescriptor socket_;
};

/// Tells whoever listens at the socket of kUseSocketVariable that a session or token is in use. Does nothing where that
/// fails: it is told again with the next request. Any thread.
void SendUseNote(const std::string& id);

}  // namespace recorder
