#pragma once

#include <ifaddrs.h>

#include <memory>

#include "recorder/utility/handle.h"

namespace recorder {

/// The addresses of this machine's network interfaces, entry by entry.
using InterfaceList = std::unique_ptr<ifaddrs, Deleter<freeifaddrs>>;

/// Null, with the reason in errno, when they cannot be listed. Any thread.
inline InterfaceList ListInterfaces() {
  ifaddrs* list = nullptr;
  return InterfaceList(getifaddrs(&list) == 0 ? list : nullptr);
}

}  // namespace recorder
