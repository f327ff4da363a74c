#pragma once

#include <string>

namespace recorder {

/// Reads a secret from standard input: its first line, or, on a terminal, two equal entries after a prompt and without
/// echo. "" when there is nothing. Throws std::runtime_error when the entries differ, the line is longer than 1024
/// bytes or the user interrupts.
std::string ReadPassword(const std::string& prompt);

/// The same for a secret that was chosen before: one entry is enough.
std::string ReadKnownPassword(const std::string& prompt);

}  // namespace recorder
