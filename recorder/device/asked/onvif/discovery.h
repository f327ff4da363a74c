#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "recorder/device/asked/onvif/discovery_answers.h"

// WS-Discovery: which cameras are on the local network.

namespace recorder::onvif {

/// Sends a probe from `interface`, or without one from every interface that is up and takes multicasts but for the
/// loopback, and collects answers for `duration`: one entry a host and port, in the order of addresses, 1000 at most.
/// Throws std::runtime_error when there is no such interface or no probe could be sent. Any thread.
std::vector<FoundCamera> Discover(const std::optional<std::string>& interface, std::chrono::milliseconds duration);

}  // namespace recorder::onvif
