#pragma once

#define NO_FCGI_DEFINES
#include <fcgiapp.h>

#include <string_view>

namespace recorder {

/// Sends `text` as the output of a request, of which nothing waits in its own buffer. That one goes out in pieces of
/// 8 KiB, so that a picture wakes the web server thirty times; these have 64 KiB, the largest record (FastCGI 1.0
/// section 3.3). Whoever has hung up gets no more.
void SendLarge(const FCGX_Request& request, std::string_view text);

}  // namespace recorder
