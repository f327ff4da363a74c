#pragma once

#include <string>
#include <vector>

namespace recorder {

/// The addresses of this machine's network interfaces, loopback included, in their shortest form; without those of the
/// link, which no URL can name.
std::vector<std::string> OwnAddresses();

}  // namespace recorder
