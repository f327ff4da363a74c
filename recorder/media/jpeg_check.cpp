#include "recorder/media/jpeg_check.h"

#include <cstddef>
#include <optional>

namespace recorder {
namespace {

// Marker codes, the byte after 0xFF.
constexpr unsigned kStartOfImage = 0xD8;
constexpr unsigned kEndOfImage = 0xD9;
constexpr unsigned kStartOfScan = 0xDA;

using Bytes = std::span<const std::uint8_t>;

unsigned Number(Bytes bytes, std::size_t at) { return unsigned{bytes[at]} << 8U | bytes[at + 1]; }

bool IsFrameHeader(unsigned marker) {  // SOF0 to SOF15 without DHT, JPG and DAC, which lie between
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

/// Position behind the next marker that is neither a stuffed byte nor a restart marker, from `at` on.
std::optional<std::size_t> SkipScanData(Bytes bytes, std::size_t at) {
  for (; at + 1 < bytes.size(); ++at) {
    if (bytes[at] != 0xFF) continue;
    const unsigned next = bytes[at + 1];
    if (next != 0x00 && next != 0xFF && (next < 0xD0 || next > 0xD7)) return at;
  }
  return std::nullopt;
}

}  // namespace

bool IsWholeJpeg(Bytes bytes) {
  if (bytes.size() < 4 || Number(bytes, 0) != (0xFF00 | kStartOfImage)) return false;
  bool hasSize = false;
  bool hasScan = false;
  for (std::size_t at = 2; at + 1 < bytes.size();) {
    if (bytes[at] != 0xFF) return false;
    const unsigned marker = bytes[at + 1];
    if (marker == 0xFF) {  // fill byte
      ++at;
      continue;
    }
    if (marker == kEndOfImage) return hasSize && hasScan;
    if (at + 4 > bytes.size()) return false;
    const std::size_t length = Number(bytes, at + 2);
    const std::size_t end = at + 2 + length;
    if (length < 2 || end > bytes.size()) return false;
    if (IsFrameHeader(marker)) hasSize = length >= 8 && Number(bytes, at + 5) != 0 && Number(bytes, at + 7) != 0;
    hasScan = hasScan || marker == kStartOfScan;
    const std::optional<std::size_t> next = marker == kStartOfScan ? SkipScanData(bytes, end) : end;
    if (!next) return false;
    at = *next;
  }
  return false;
}

}  // namespace recorder
