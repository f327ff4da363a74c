#include "recorder/records/record_mistakes.h"

#include <tuple>

#include "recorder/records/records.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"

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

bool KeepsPassword(const CameraRecord& before, const CameraRecord& after) {
  const auto login = [](const CameraRecord& camera) {
    return std::tie(camera.host, camera.port, camera.vendor, camera.model, camera.user, camera.sourcePath);
  };
  return login(before) == login(after);
}

}  // namespace recorder
