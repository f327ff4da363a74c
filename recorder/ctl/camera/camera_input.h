#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "recorder/records/records.h"
#include "recorder/utility/config.h"

namespace recorder {

// What the commands about one stored camera have in common.

/// The camera's id, which the command line must name.
void AddId(CLI::App& command, int& id);

/// An option or argument that says "enabled" or "disabled", for StatusOf.
template <class Text>
CLI::Option* AddStatus(CLI::App& command, const std::string& name, Text& status) {
  return command.add_option(name, status, "enabled or disabled")->check(CLI::IsMember({"enabled", "disabled"}));
}

CAM_CONN_STATUS StatusOf(const std::string& text);

/// --no-password, with which CameraPassword is not asked for.
CLI::Option* AddNoPasswordFlag(CLI::App& command, bool& hasNoPassword);

/// The password that the user gives on standard input or at a prompt. The caller wipes it. Throws std::runtime_error
/// when there is none.
std::string CameraPassword();

/// The record of that id. Throws std::runtime_error, which names it, when there is none.
CameraRecord FindCamera(const Records& records, int id);

/// Throws the same.
[[noreturn]] void FailWithoutCamera(int id);

/// --force, which stores a camera in spite of the following.
void AddForceFlag(CLI::App& command, bool& isForced);

/// Gives the camera the recorder's own names of its vendor and model. Throws std::runtime_error, which names the
/// nearest ones, when there is no such model.
void CheckModel(CameraRecord& camera, const Config& config);

/// Throws std::runtime_error when the same camera is stored under another id.
void CheckPlace(const CameraRecord& camera, const Records& records);

}  // namespace recorder
