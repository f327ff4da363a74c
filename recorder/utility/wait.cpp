#include "recorder/utility/wait.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <limits>

namespace recorder {

bool WaitForAny(std::span<pollfd> entries, Clock::time_point deadline) {
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) return false;
    const int limit = static_cast<int>(std::min<long long>(left, std::numeric_limits<int>::max()));
    const int ready = poll(entries.data(), entries.size(), limit);
    if (ready > 0) return true;
    if (ready < 0 && errno != EINTR) return true;
  }
}

bool WaitFor(int descriptor, short events, Clock::time_point deadline) {
  pollfd entry{descriptor, events, 0};
  return WaitForAny({&entry, 1}, deadline);
}

}  // namespace recorder
