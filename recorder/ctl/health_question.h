#pragma once

#include <string>

namespace recorder {

/// Asks the recorder at `address`, such as "http://127.0.0.1:8470/", whether it is alive, for 5 s at most. "" when it
/// is, else what came instead. A certificate is not looked at: whoever asks is on the same machine. Any thread.
std::string WhyNotAlive(const std::string& address);

}  // namespace recorder
