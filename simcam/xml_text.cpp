#include "simcam/xml_text.h"

#include <algorithm>

#include "simcam/glib_handle.h"

namespace simcam {

std::string Escape(const std::string& text) {
  return GlibText(g_markup_escape_text(text.data(), static_cast<gssize>(text.size()))).get();
}

std::string Fill(std::string_view text, std::initializer_list<Value> values) {
  std::string filled;
  while (true) {
    const size_t open = text.find('{');
    const size_t close = text.find('}', open);
    filled += text.substr(0, open);
    if (close == std::string_view::npos) return filled;
    const std::string_view name = text.substr(open + 1, close - open - 1);
    const auto* value = std::find_if(values.begin(), values.end(), [&](const Value& v) { return v.name == name; });
    filled += value == values.end() ? std::string(text.substr(open, close - open + 1)) : value->text;
    text.remove_prefix(close + 1);
  }
}

}  // namespace simcam
