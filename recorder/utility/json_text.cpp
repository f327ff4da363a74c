#include "recorder/utility/json_text.h"

#include <json/reader.h>
#include <json/writer.h>

#include <algorithm>
#include <memory>
#include <string_view>

#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

Json::StreamWriterBuilder WriterOf(bool emitsUtf8, const char* indentation = "") {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = indentation;
  builder["emitUTF8"] = emitsUtf8;
  return builder;
}

std::string ByJsonCpp(const Json::Value& json, bool emitsUtf8) {
  static const Json::StreamWriterBuilder plain = WriterOf(true);
  return Json::writeString(emitsUtf8 ? plain : WriterOf(false), json);
}

void Append(std::string& text, const Json::Value& json);

/// Only what must be escaped is left to JsonCpp.
void AppendText(std::string& text, std::string_view characters) {
  const bool isPlain = std::none_of(characters.begin(), characters.end(), [](char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\';
  });
  if (!isPlain) {
    text += ByJsonCpp(std::string(characters), true);
    return;
  }
  const std::size_t start = text.size() + 1;
  text.append(characters.size() + 2, '"');
  std::ranges::copy(characters, text.begin() + static_cast<std::ptrdiff_t>(start));
}

void AppendObject(std::string& text, const Json::Value& object) {
  text += '{';
  for (auto member = object.begin(); member != object.end(); ++member) {
    if (text.back() != '{') text += ',';
    const char* end = nullptr;
    const char* const name = member.memberName(&end);
    AppendText(text, {name, end});
    text += ':';
    Append(text, *member);
  }
  text += '}';
}

void AppendArray(std::string& text, const Json::Value& array) {
  text += '[';
  for (Json::ArrayIndex i = 0; i < array.size(); ++i) {
    if (i > 0) text += ',';
    Append(text, array[i]);
  }
  text += ']';
}

/// As JsonCpp writes it, which takes five times as long: it makes a text of each value and sends that through a stream.
void Append(std::string& text, const Json::Value& json) {
  const char* begin = nullptr;
  const char* end = nullptr;
  switch (json.type()) {
    case Json::objectValue:
      return AppendObject(text, json);
    case Json::arrayValue:
      return AppendArray(text, json);
    case Json::stringValue:
      json.getString(&begin, &end);
      return AppendText(text, {begin, end});
    case Json::booleanValue:
      text += json.asBool() ? "true" : "false";
      return;
    case Json::intValue:
      text += std::to_string(json.asLargestInt());
      return;
    case Json::uintValue:
      text += std::to_string(json.asLargestUInt());
      return;
    default:
      text += ByJsonCpp(json, true);
  }
}

}  // namespace

std::optional<Json::Value> ParseStrictJson(std::string_view text, std::string& mistakes) {
  if (!IsUtf8(text)) {
    mistakes = "the text is not UTF-8";
    return std::nullopt;
  }
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  builder["stackLimit"] = kDeepestJson;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value value;
  try {
    if (reader->parse(text.data(), text.data() + text.size(), &value, &mistakes)) return value;
  } catch (const Json::Exception& error) {  // nested too deeply
    mistakes = error.what();
  }
  return std::nullopt;
}

std::string ToText(const Json::Value& json) {
  std::string text;
  Append(text, json);
  if (IsUtf8(text)) return text;
  return ByJsonCpp(json, false);  // which escapes, and replaces what is no character
}

std::string ToPrettyText(const Json::Value& json) { return Json::writeString(WriterOf(true, "  "), json) + "\n"; }

}  // namespace recorder
