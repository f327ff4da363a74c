#pragma once

#include <filesystem>

namespace recorder {

/// Reads all parts that a folder holds, as the recorder would that went on with them. Throws BackupError, or another
/// std::exception with a text for people, when it could not with one of them.
void TryState(const std::filesystem::path& folder);

}  // namespace recorder
