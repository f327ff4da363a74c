#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace simcam {

/// A text as XML: what is markup in it, escaped.
std::string Escape(const std::string& text);

/// A value for a place in a template. Texts are XML already; numbers are written as such.
struct Value {
  Value(std::string_view place, std::string xml) : name(place), text(std::move(xml)) {}
  Value(std::string_view place, const char* xml) : name(place), text(xml) {}
  Value(std::string_view place, int number) : name(place), text(std::to_string(number)) {}

  std::string_view name;
  std::string text;
};

/// A template with values in the places "{name}"; what is in braces and has no value stays. Values are not searched
/// for places.
std::string Fill(std::string_view text, std::initializer_list<Value> values);

}  // namespace simcam
