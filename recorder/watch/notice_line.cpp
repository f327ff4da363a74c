#include "recorder/watch/notice_line.h"

#include <algorithm>

namespace recorder {
namespace {

constexpr int kAtOnce = 100;
constexpr std::int64_t kRemembered = 86'400;  // seconds

std::deque<CameraEvent> ReadEvents(const Records& records, std::int64_t after, const EventFilter& filter = {}) {
  const auto events = records.EventsAfter(after, kAtOnce, filter);
  return {events.begin(), events.end()};
}

}  // namespace

NoticeLine::NoticeLine(const Records& records, const WebhookPlace& told, std::int64_t now) : place_(told) {
  const EventFilter recent{.since = now - kRemembered};
  std::int64_t last = 0;
  for (auto events = ReadEvents(records, last, recent); !events.empty(); events = ReadEvents(records, last, recent)) {
    for (const CameraEvent& event : events) {
      if (event.id > told.event) return;
      while (flapping_.TakeSteady(event.at)) continue;
      flapping_.Take(event);
    }
    last = events.back().id;
  }
}

/// Those that were told before this process began are told no more, nor are cameras that are there no more.
std::optional<Notice> NoticeLine::Steady(const Records& records, std::int64_t now) {
  const auto isOver = [&](const Notice& notice) {
    return notice.event.at + Flapping::kTime <= place_.steady || !records.Find(notice.event.cameraId);
  };
  auto notice = flapping_.TakeSteady(now);
  while (notice && isOver(*notice)) notice = flapping_.TakeSteady(now);
  if (notice) place_.steady = notice->event.at + Flapping::kTime;
  return notice;
}

std::optional<Notice> NoticeLine::Next(const Records& records, std::int64_t now) {
  std::optional<Notice> notice;
  while (!notice) {
    if (events_.empty()) events_ = ReadEvents(records, place_.event);
    notice = Steady(records, events_.empty() ? now : std::min(now, events_.front().at));
    if (notice || events_.empty()) return notice;
    notice = flapping_.Take(events_.front());
    place_.event = events_.front().id;
    events_.pop_front();
  }
  return notice;
}

}  // namespace recorder
