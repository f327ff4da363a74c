#include "recorder/utility/json_text.h"

#include <gtest/gtest.h>
#include <json/writer.h>

#include <cstdint>
#include <limits>

namespace recorder {
namespace {

Json::Value AllKinds() {
  Json::Value all;
  for (const char* text : {"", "plain", "\"\\/\b\n\x01\x7f", "\u00e9\u2028\U0001f600"}) all[text].append(text);
  all["zero"] = std::string("a\0b", 3);
  all["numbers"].append(std::numeric_limits<Json::Int64>::min());
  all["numbers"].append(std::numeric_limits<Json::UInt64>::max());
  for (const double number : {0.1, 1e300, -5.0}) all["numbers"].append(number);
  for (const bool truth : {true, false}) all["list"]["truth"].append(truth);
  for (const auto type : {Json::nullValue, Json::arrayValue, Json::objectValue}) all["empty"].append(Json::Value(type));
  all["empty"][9] = 1;
  return all;
}

TEST(JsonTextTest, IsWhatJsonCppWritesAlsoOfWhatIsNoText) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  builder["emitUTF8"] = true;
  Json::Value all = AllKinds();
  EXPECT_EQ(ToText(all), Json::writeString(builder, all));
  builder["emitUTF8"] = false;
  all["broken"] = "\xe9";
  EXPECT_EQ(ToText(all), Json::writeString(builder, all));
}

}  // namespace
}  // namespace recorder
