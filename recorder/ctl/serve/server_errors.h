#pragma once

#include <filesystem>

namespace recorder {

/// Writes what the web server itself answers when it refuses a request, in the shape of all answers, as its files
/// `folder`/error-STATUS.html. Throws std::system_error.
void WriteServerErrors(const std::filesystem::path& folder);

}  // namespace recorder
