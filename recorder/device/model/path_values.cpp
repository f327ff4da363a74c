#include "recorder/device/model/path_values.h"

#include <algorithm>
#include <string>

#include "recorder/utility/text.h"

namespace recorder {
namespace {

constexpr std::string_view kWords[] = {
    "main",    "sub",       "third",  "primary", "secondary", "first", "second", "stream",    "profile", "media",
    "video",   "audio",     "image",  "channel", "ch",        "cam",   "camera", "token",     "source",  "encoder",
    "config",  "tcp",       "udp",    "rtp",     "rtsp",      "http",  "https",  "multicast", "unicast", "onvif",
    "h264",    "h265",      "hevc",   "avc",     "mpeg",      "mp",    "mjpeg",  "mjpg",      "jpeg",    "jpg",
    "aac",     "g711",      "pcm",    "true",    "false",     "yes",   "no",     "on",        "off",     "none",
    "all",     "auto",      "full",   "half",    "high",      "low",   "medium", "default",   "live",    "preview",
    "hd",      "sd",        "vga",    "cif",     "qcif",      "4k",    "480p",   "720p",      "1080p",   "fps",
    "quality", "bandwidth", "mobile", "balanced"};

/// Bytes of the longest known word at the front of `text`.
std::size_t KnownSize(std::string_view text) {
  std::size_t longest = 0;
  for (const std::string_view word : kWords) {
    if (text.starts_with(word)) longest = std::max(longest, word.size());
  }
  return longest;
}

std::size_t CountDigits(std::string_view text) {
  return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), IsDigit) - text.begin());
}

/// Bytes of the number at the front of `text`, or of the size of pictures ("1920x1080"); 0 for a long one.
std::size_t NumberSize(std::string_view text) {
  constexpr std::size_t kLongest = 4;
  const std::size_t size = CountDigits(text);
  if (size == 0 || size > kLongest || !text.substr(size).starts_with('x')) return size > kLongest ? 0 : size;
  const std::size_t height = CountDigits(text.substr(size + 1));
  return height == 0 || height > kLongest ? 0 : size + 1 + height;
}

/// Of one letter, or of known words and numbers alone.
bool IsCommonWord(std::string_view word) {
  if (word.size() == 1) return true;
  while (!word.empty()) {
    const std::size_t size = std::max(KnownSize(word), NumberSize(word));
    if (size == 0) return false;
    word.remove_prefix(size);
  }
  return true;
}

}  // namespace

bool IsCommonValue(std::string_view value) {
  constexpr std::ptrdiff_t kMostDigits = 8;  // a size of pictures; numbers of devices have more
  std::string words = LowerCase(value);
  if (std::count_if(words.begin(), words.end(), IsDigit) > kMostDigits) return false;
  std::replace_if(
      words.begin(), words.end(), [](char c) { return c == '-' || c == '_' || c == '.' || c == ','; }, ' ');
  const bool isPlain =
      std::all_of(words.begin(), words.end(), [](char c) { return IsDigit(c) || IsLower(c) || c == ' '; });
  const auto parts = Split(words, ' ');
  return isPlain && std::all_of(parts.begin(), parts.end(), IsCommonWord);
}

}  // namespace recorder
