#include "recorder/ctl/serve/served_address.h"

#include <stdexcept>
#include <system_error>

#include "recorder/utility/files.h"

namespace recorder {

namespace {

std::filesystem::path FileIn(const std::filesystem::path& stateFolder) { return stateFolder / "address"; }

}  // namespace

ServedAddress::ServedAddress(const std::filesystem::path& stateFolder, bool hasTls, int port)
    : file_(FileIn(stateFolder)),
      text_(std::string(hasTls ? "https" : "http") + "://127.0.0.1:" + std::to_string(port) + "/") {
  ReplaceFile(file_, text_);
}

ServedAddress::~ServedAddress() {
  std::error_code ignored;
  std::filesystem::remove(file_, ignored);
}

std::string ServedAddress::Read(const std::filesystem::path& stateFolder) {
  if (!std::filesystem::exists(FileIn(stateFolder))) {
    throw std::runtime_error("the recorder does not run: recorderctl serve starts it");
  }
  return ReadFile(FileIn(stateFolder));
}

}  // namespace recorder
