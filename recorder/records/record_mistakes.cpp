#include "recorder/records/record_mistakes.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <tuple>

#include "recorder/records/records.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"
#include "recorder/utility/whole_address.h"

namespace recorder {

std::optional<std::string> TextMistake(const std::string& text) {
  if (text.size() > kLongestRecordText) return "longer than " + std::to_string(kLongestRecordText) + " bytes";
  if (!IsUtf8(text)) return "is not UTF-8";
  if (HoldsControls(text)) return "holds a control character";
  return std::nullopt;
}

std::optional<std::string> NameMistake(const std::string& text) { return text.empty() ? "missing" : TextMistake(text); }

std::optional<RecordMistake> FindMistake(const CameraRecord& camera, const std::string& password) {
  const struct {
    const char* member;
    const std::string& text;
    std::optional<std::string> (*mistakeOf)(const std::string& text);
  } texts[] = {
      {"name", camera.name, NameMistake},       {"vendor", camera.vendor, NameMistake},
      {"model", camera.model, TextMistake},     {"host", camera.host, NameMistake},
      {"user", camera.user, TextMistake},       {"password", password, TextMistake},
      {"channel", camera.channel, TextMistake}, {"sourcePath", camera.sourcePath, TextMistake},
  };
  for (const auto& [member, text, mistakeOf] : texts) {
    if (const auto mistake = mistakeOf(text)) return RecordMistake{member, *mistake};
  }
  if (camera.vendor.find(' ') != std::string::npos) return RecordMistake{"vendor", "holds a blank"};
  if (camera.host.find_first_of(" /@?#") != std::string::npos) {
    return RecordMistake{"host", "is not a host name or address"};
  }
  if (camera.port < 1 || camera.port > 65535) return RecordMistake{"port", "is not a port (1 to 65535)"};
  if (password == gszFakePass) {
    return RecordMistake{"password", "is the text that stands for a stored password"};
  }
  return std::nullopt;
}

namespace {

bool IsStreamName(std::string_view name) { return std::ranges::find(kStreamNames, name) != kStreamNames.end(); }

std::optional<std::string> MistakeIn(const CameraStream& stream) {
  if (!IsStreamName(stream.name)) return "is not named main, sub or third";
  if (const auto mistake = TextMistake(stream.address)) return stream.name + ": its address " + *mistake;
  if (HoldsLogin(stream.address)) return stream.name + ": its address holds a login";
  if (stream.name == kOwnStream) return std::nullopt;
  CameraRecord camera;
  camera.name = camera.host = stream.name;
  const auto mistake = FindMistake(RecordOfStream(stream, camera), "");
  return mistake ? std::optional(stream.name + ": its " + mistake->member + ' ' + mistake->text) : std::nullopt;
}

std::optional<std::string> MistakeIn(const CameraFact& fact) {
  for (const std::string* text : {&fact.stream, &fact.name, &fact.value, &fact.from}) {
    if (const auto mistake = TextMistake(*text)) return *mistake;
    if (text->size() > kLongestFoundName) return "longer than " + std::to_string(kLongestFoundName) + " bytes";
  }
  if (!fact.stream.empty() && !IsStreamName(fact.stream)) return "one is of no stream";
  return fact.name.empty() ? std::optional<std::string>("one has no name") : std::nullopt;
}

}  // namespace

std::optional<RecordMistake> FindMistake(const std::vector<CameraStream>& streams) {
  std::set<std::string> names;
  for (const CameraStream& stream : streams) {
    if (const auto mistake = MistakeIn(stream)) return RecordMistake{"streams", *mistake};
    if (!names.insert(stream.name).second) return RecordMistake{"streams", stream.name + ": is there twice"};
  }
  return std::nullopt;
}

std::optional<RecordMistake> FindMistake(const std::vector<CameraFact>& facts) {
  if (facts.size() > kMostFacts) return RecordMistake{"facts", "more than " + std::to_string(kMostFacts)};
  std::set<std::tuple<std::string, std::string, std::string>> keys;
  for (const CameraFact& fact : facts) {
    if (const auto mistake = MistakeIn(fact)) return RecordMistake{"facts", *mistake};
    if (!keys.insert({fact.stream, fact.name, fact.from}).second) return RecordMistake{"facts", "one is there twice"};
  }
  return std::nullopt;
}

}  // namespace recorder
