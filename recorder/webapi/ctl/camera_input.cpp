#include "recorder/webapi/ctl/camera_input.h"

#include <stdexcept>

#include "recorder/webapi/ctl/password_input.h"

namespace recorder {

void AddId(CLI::App& command, int& id) { command.add_option("id", id, "the camera's id")->required(); }

void AddNoPasswordFlag(CLI::App& command, bool& hasNoPassword) {
  command.add_flag("--no-password", hasNoPassword, "store no password");
}

std::string CameraPassword(bool hasNoPassword) {
  if (hasNoPassword) return "";
  std::string password = ReadPassword("Password of the camera");
  if (password.empty()) throw std::runtime_error("no password on standard input; --no-password stores none");
  return password;
}

void Expect(bool isThere, int id) {
  if (!isThere) throw std::runtime_error("there is no camera " + std::to_string(id));
}

}  // namespace recorder
