#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

// What of the state folder a backup holds: cameras and trusted keys, the key that they are sealed by, users, sessions
// and tokens, the recorder's own certificate, models of the user's own, what cameras said of themselves. Not what is of
// one run or one machine: locks, the address that is served, the write-ahead log, notes of checks under way, and runs
// of tests with their passwords.

namespace recorder {

/// True for the name of a part, which is its path below the state folder and leads to nowhere else.
bool IsPart(const std::string& name);

/// Bytes that a part may have. That of the records grows with what happens.
std::uint64_t LargestSize(const std::string& part);

/// The parts that are in a state folder now.
std::vector<std::string> PartsIn(const std::filesystem::path& stateFolder);

}  // namespace recorder
