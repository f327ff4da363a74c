#include "recorder/notice/notice.h"

#include <array>

#include "recorder/notice/event_json.h"
#include "recorder/utility/json_text.h"

namespace recorder {

std::string TextOf(const Notice& notice) {
  constexpr std::array kKinds = {"change", "flapping", "steady", "test"};
  const bool isTest = notice.kind == Notice::Kind::kTest;
  Json::Value json = isTest ? Json::Value(Json::objectValue) : EventJson(notice.event);
  json["kind"] = kKinds.at(static_cast<std::size_t>(notice.kind));
  if (!isTest) json["name"] = notice.name;
  return ToText(json);
}

}  // namespace recorder
