#include "recorder/own/metrics_text.h"

#include <array>
#include <charconv>

namespace recorder {

std::string NumberText(double value) {
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value);
  return {text.data(), end.ptr};
}

void MetricsText::Begin(std::string_view name, std::string_view type, std::string_view help) {
  name_ = name;
  text_ += "# HELP " + name_ + ' ' + std::string(help) + "\n# TYPE " + name_ + ' ' + std::string(type) + '\n';
}

void MetricsText::Add(double value, std::string_view labels, std::string_view suffix) {
  text_ += name_ + std::string(suffix);
  if (!labels.empty()) text_ += '{' + std::string(labels) + '}';
  text_ += ' ' + NumberText(value) + '\n';
}

std::string Label(std::string_view name, std::string_view value) {
  return std::string(name) + "=\"" + std::string(value) + '"';
}

}  // namespace recorder
