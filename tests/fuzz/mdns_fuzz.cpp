#include "recorder/device/find/mdns.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"
#include "tests/fuzz/fuzz.h"

// An answer of multicast DNS, whose number is always the right one.

namespace recorder {

void RunInput(std::string_view input) {
  if (input.size() < 2) return;
  const auto id =
      static_cast<std::uint16_t>(static_cast<unsigned char>(input[0]) << 8U | static_cast<unsigned char>(input[1]));
  const auto device = find::ReadMdnsAnswer(input, id, "192.0.2.7");
  if (!device) return;
  Require(!device->name.empty() && device->address == "192.0.2.7" && device->port >= 0 && device->port <= 65535);
  for (const std::string& text : {device->name, device->maker, device->serial}) {
    Require(IsUtf8(text) && !HoldsControls(text));
  }
}

}  // namespace recorder
