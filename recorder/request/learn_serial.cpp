#include "recorder/request/learn_serial.h"

#include <exception>

#include "recorder/records/records.h"
#include "recorder/utility/config.h"
#include "recorder/utility/log.h"
#include "recorder/utility/text.h"

namespace recorder {

void LearnSerial(const std::string& vendor, const std::string& host, int port, const std::string& serial) try {
  const auto& stateFolder = GetConfig().stateFolder;
  if (serial.empty() || !Records::AreThere(stateFolder)) return;
  Records records(stateFolder);
  for (const CameraRecord& camera : records.List()) {
    const bool isAt = camera.port == port && NormalizedHost(camera.host) == NormalizedHost(host);
    if (isAt && camera.vendor == vendor) records.LearnIdentity(camera.id, {"", serial});
  }
} catch (const std::exception& error) {
  LogFailure(std::string("A camera's serial number was not kept: ") + error.what());
}

}  // namespace recorder
