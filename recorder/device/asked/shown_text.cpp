#include "recorder/device/asked/shown_text.h"

#include <algorithm>

#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"

namespace recorder {

std::string Shown(std::string_view text) {
  text = Trimmed(text);
  if (!IsUtf8(text)) return "";
  std::size_t size = std::min(text.size(), kLongestFoundName);
  while (!IsUtf8(text.substr(0, size))) --size;
  return EscapeControls(text.substr(0, size));
}

}  // namespace recorder
