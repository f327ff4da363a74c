#include "recorder/worker/large_output.h"

#include <fastcgi.h>
#include <sys/uio.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>

namespace recorder {

namespace {

FCGI_Header HeaderOf(int requestId, std::size_t size) {
  const auto byte = [](std::size_t number) { return static_cast<unsigned char>(number & 0xffU); };
  const auto id = static_cast<std::size_t>(requestId);
  FCGI_Header header{};
  header.version = FCGI_VERSION_1;
  header.type = FCGI_STDOUT;
  header.requestIdB1 = byte(id >> 8U);
  header.requestIdB0 = byte(id);
  header.contentLengthB1 = byte(size >> 8U);
  header.contentLengthB0 = byte(size);
  return header;
}

/// Takes what was written, `size` bytes, off the front of the parts.
void Advance(std::array<iovec, 2>& parts, std::size_t size) {
  for (iovec& part : parts) {
    const std::size_t taken = std::min(size, part.iov_len);
    part.iov_base = static_cast<char*>(part.iov_base) + taken;
    part.iov_len -= taken;
    size -= taken;
  }
}

bool WriteAll(int descriptor, std::array<iovec, 2> parts) {
  while (parts[0].iov_len + parts[1].iov_len > 0) {
    const ssize_t written = writev(descriptor, parts.data(), parts.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    Advance(parts, static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace

void SendLarge(const FCGX_Request& request, std::string_view text) {
  constexpr std::size_t kLargestRecord = 0xfff8;  // a multiple of 8 needs no padding
  bool isHeard = true;
  while (isHeard && !text.empty()) {
    const std::string_view piece = text.substr(0, kLargestRecord);
    FCGI_Header header = HeaderOf(request.requestId, piece.size());
    isHeard =
        WriteAll(request.ipcFd, {iovec{&header, sizeof(header)}, iovec{const_cast<char*>(piece.data()), piece.size()}});
    text.remove_prefix(piece.size());
  }
}

}  // namespace recorder
