#include <sys/mman.h>
#include <unistd.h>

#include <string>

#include "recorder/utility/config.h"
#include "recorder/utility/handle.h"
#include "tests/fuzz/fuzz.h"

// The text of a configuration file, or one address range of its policy.

namespace recorder {

void RunInput(std::string_view input) try {
  const auto range = ParseAddressRange(std::string(input));
  Require(!range || (range->bits >= 0 && range->bits <= 128 && range->Contains(range->start)));
  static const FileDescriptor file(memfd_create("config", MFD_CLOEXEC));
  Require(ftruncate(file.Get(), 0) == 0);
  Require(pwrite(file.Get(), input.data(), input.size(), 0) == static_cast<ssize_t>(input.size()));
  const Config config = LoadConfig("/proc/self/fd/" + std::to_string(file.Get()));
  config.addressPolicy.Allows(IpAddress{});
  Require(config.stateFolder.is_absolute() && config.limits.test.count() > 0 && config.limits.picture.count() > 0);
} catch (const ConfigError& error) {
  Require(!std::string_view(error.what()).empty());
}

}  // namespace recorder
