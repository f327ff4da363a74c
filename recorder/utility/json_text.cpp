#include "recorder/utility/json_text.h"

#include <json/reader.h>
#include <json/writer.h>

#include <memory>

#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"

namespace recorder {

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
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  builder["emitUTF8"] = true;
  std::string text = Json::writeString(builder, json);
  if (IsUtf8(text)) return text;
  builder["emitUTF8"] = false;  // the writer then escapes, and replaces what is no character
  return Json::writeString(builder, json);
}

}  // namespace recorder
