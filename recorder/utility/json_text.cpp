#include "recorder/utility/json_text.h"

#include <json/reader.h>
#include <json/writer.h>

#include <memory>

#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

Json::StreamWriterBuilder WriterOf(bool emitsUtf8) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  builder["emitUTF8"] = emitsUtf8;
  return builder;
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
  static const Json::StreamWriterBuilder plain = WriterOf(true);
  std::string text = Json::writeString(plain, json);
  // The other one escapes, and replaces what is no character.
  return IsUtf8(text) ? text : Json::writeString(WriterOf(false), json);
}

}  // namespace recorder
