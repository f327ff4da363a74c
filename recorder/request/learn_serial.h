#pragma once

#include <string>

namespace recorder {

/// Keeps the serial number that the camera at `host` and `port` has just told, for the stored cameras of `vendor` there
/// of which none is known: by it they are known again elsewhere. A failure is logged, and costs nothing else. Any
/// thread.
void LearnSerial(const std::string& vendor, const std::string& host, int port, const std::string& serial);

}  // namespace recorder
