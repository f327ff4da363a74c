#include "recorder/own/event_stream.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "recorder/notice/event_json.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/config.h"
#include "recorder/utility/file_lock.h"
#include "recorder/utility/handle.h"
#include "recorder/utility/json_text.h"
#include "recorder/utility/state_files.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

using std::chrono::seconds;

constexpr seconds kLongest{50};
constexpr std::chrono::milliseconds kLookAgain{500};
/// That whoever asked has gone is noticed by sending him something.
constexpr seconds kLongestSilence{2};
constexpr std::size_t kMostAtOnce = 100;

int Places() {
  const char* count = std::getenv(kStreamsVariable);  // NOLINT(concurrency-mt-unsafe): nobody sets variables
  return count == nullptr ? 1 : ParseNumber<int>(count).value_or(1);
}

/// Takes one of the places that workers have for telling events, for as long as the result lives: a byte of one file.
/// Throws HttpError when all are taken.
FileDescriptor TakePlace(const std::filesystem::path& stateFolder) {
  FileDescriptor file = OpenLocks(stateFolder / kEventsLock);
  if (!file) throw std::system_error(errno, std::generic_category(), kEventsLock);
  for (int place = 0; place < Places(); ++place) {
    if (TryLock(file, F_WRLCK, place, 1)) return file;
  }
  throw HttpError(503, "enough workers tell events already: ask for pages of them", "Retry-After: 30\r\n");
}

/// The id of the newest event that pages would show; 0: there is none.
std::int64_t NewestEvent(const Records& records) {
  const auto events = records.EventsBefore(std::numeric_limits<std::int64_t>::max(), 1);
  return events.empty() ? 0 : events.front().id;
}

/// The last event that whoever asks knows of. After an older backup was restored, he may know of some that never were.
std::int64_t LastKnown(const HttpRequest& request, const Records& records) {
  const std::int64_t newest = NewestEvent(records);
  const auto given = ParseNumber<std::int64_t>(request.lastEventId);
  return given && *given >= 0 ? std::min(*given, newest) : newest;
}

std::string IdLine(std::int64_t id) { return "id: " + std::to_string(id) + "\n"; }

std::string TextOf(const std::vector<CameraEvent>& events) {
  std::string text;
  for (const CameraEvent& event : events) {
    text += IdLine(event.id) + "data: " + ToText(EventJson(event)) + "\n\n";
  }
  return text;
}

/// Events behind `last`, which becomes the last one that was looked at, so that none is looked at again.
std::vector<CameraEvent> NextEvents(const Records& records, const EventFilter& filter, std::int64_t& last) {
  const std::int64_t newest = NewestEvent(records);
  if (newest <= last) return {};
  std::vector<CameraEvent> events = records.EventsAfter(last, static_cast<int>(kMostAtOnce), filter);
  const std::int64_t lastTold = events.empty() ? 0 : events.back().id;
  last = events.size() == kMostAtOnce ? lastTold : std::max(lastTold, newest);
  return events;
}

/// Tells of what comes next, or how far there is nothing. False when whoever asked has gone.
bool TellNext(const Records& records, const EventFilter& filter, LineAnswer& answer, std::int64_t& last) {
  const Clock::time_point silentUntil = Clock::now() + kLongestSilence;
  std::vector<CameraEvent> events = NextEvents(records, filter, last);
  while (events.empty() && Clock::now() < silentUntil) {
    std::this_thread::sleep_for(kLookAgain);
    events = NextEvents(records, filter, last);
  }
  return answer.TellEvents(events.empty() ? IdLine(last) + "\n" : TextOf(events));
}

}  // namespace

bool WantsStream(const HttpRequest& request) { return request.accept.find("text/event-stream") != std::string::npos; }

void StreamEvents(const HttpRequest& request, const EventFilter& filter, LineAnswer& answer) {
  const FileDescriptor place = TakePlace(GetConfig().stateFolder);
  const Records records(GetConfig().stateFolder);
  const Clock::time_point end = Clock::now() + kLongest;
  std::int64_t last = LastKnown(request, records);
  bool isThere = answer.TellEvents("retry: 2000\n" + IdLine(last) + "\n");
  while (isThere && Clock::now() < end) isThere = TellNext(records, filter, answer, last);
}

}  // namespace recorder
