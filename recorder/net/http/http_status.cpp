#include "recorder/net/http/http_status.h"

#include <algorithm>
#include <array>

namespace recorder {

bool IsRedirect(long status) {
  constexpr std::array<long, 5> kRedirects{301, 302, 303, 307, 308};
  return std::find(kRedirects.begin(), kRedirects.end(), status) != kRedirects.end();
}

}  // namespace recorder
