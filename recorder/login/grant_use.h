#pragma once

#include <filesystem>
#include <string>

namespace recorder {

/// NoteUse(), but where that fails, as on a full disk, the log says so, once a minute at most: whoever uses a session
/// or token goes on all the same. Any thread.
void TryNoteUse(const std::filesystem::path& stateFolder, const std::string& id);

}  // namespace recorder
