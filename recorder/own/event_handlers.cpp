#include <array>
#include <limits>
#include <string_view>

#include "recorder/notice/event_json.h"
#include "recorder/own/event_stream.h"
#include "recorder/own/handlers.h"
#include "recorder/own/typed_members.h"
#include "recorder/records/records.h"
#include "recorder/utility/cause_table.h"
#include "recorder/utility/config.h"

namespace recorder {

namespace {

constexpr std::array<std::string_view, 5> kParameters = {"after", "limit", "camera", "since", "cause"};
/// Of a stream: it begins behind Last-Event-ID, and has no pages.
constexpr std::array<std::string_view, 3> kStreamParameters = {"camera", "since", "cause"};
constexpr int kUsualPage = 100;
constexpr int kLargestPage = 1000;

/// An id or a time; `missing` when there is none.
std::int64_t LongOf(const OwnRequest& request, const char* member, std::int64_t missing) {
  const Json::Value& value = request.params[member];
  if (value.isNull()) return missing;
  if (!value.isInt64() || value.asInt64() < 0) throw BadMember(member, "must be a number from 0");
  return value.asInt64();
}

EventFilter FilterOf(const OwnRequest& request) {
  EventFilter filter;
  const int camera = NumberOf(request, "camera", 1, std::numeric_limits<int>::max(), 0);
  if (camera > 0) filter.cameraId = camera;
  filter.since = LongOf(request, "since", 0);
  if (!request.params.isMember("cause")) return filter;
  filter.cause = OutcomeNamed(TextOf(request, "cause"));
  if (!filter.cause) throw BadMember("cause", "is none that a camera may have");
  return filter;
}

/// `after`: the last event of the page before.
OwnAnswer Page(const OwnRequest& request, const EventFilter& filter) {
  const int limit = NumberOf(request, "limit", 1, kLargestPage, kUsualPage);
  const std::int64_t after = LongOf(request, "after", std::numeric_limits<std::int64_t>::max());
  Json::Value data(Json::objectValue);
  Json::Value& list = data["events"] = Json::Value(Json::arrayValue);
  const Records records(GetConfig().stateFolder);
  for (const CameraEvent& event : records.EventsBefore(after, limit, filter)) list.append(EventJson(event));
  const bool isFull = list.size() == static_cast<Json::ArrayIndex>(limit);
  data["next"] = isFull ? list[list.size() - 1]["id"] : Json::Value();
  return Success(data);
}

}  // namespace

OwnAnswer ListEvents(const OwnRequest& request, OwnTools& tools) {
  const bool isStream = WantsStream(request.http);
  RefuseOtherMembers(request.params, isStream ? std::span<const std::string_view>(kStreamParameters) : kParameters, "");
  const EventFilter filter = FilterOf(request);
  if (!isStream) return Page(request, filter);
  tools.note.isTimed = false;
  StreamEvents(request.http, filter, tools.lines);
  return {};
}

}  // namespace recorder
