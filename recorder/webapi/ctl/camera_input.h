#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

// What the commands about one stored camera have in common.

/// The camera's id, which the command line must name.
void AddId(CLI::App& command, int& id);

/// --no-password, for CameraPassword.
void AddNoPasswordFlag(CLI::App& command, bool& hasNoPassword);

/// The password that the user gives on standard input or at a prompt, "" with --no-password. The caller wipes it.
/// Throws std::runtime_error when there is none.
std::string CameraPassword(bool hasNoPassword);

/// Throws std::runtime_error, which names the camera, unless it `isThere`.
void Expect(bool isThere, int id);

}  // namespace recorder
