#include "recorder/watch/records_news.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "recorder/utility/state_files.h"

namespace recorder {
namespace {

/// Longer than a tick of the clock of files.
constexpr std::chrono::nanoseconds kFresh = std::chrono::milliseconds(500);

/// An empty log comes and goes with each connection.
FileStamp StampOfLog(const std::filesystem::path& log) {
  const FileStamp stamp = StampOf(log);
  return stamp.size == 0 ? FileStamp() : stamp;
}

bool IsFresh(const FileStamp& stamp) {
  const std::chrono::nanoseconds now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::abs(now - std::chrono::nanoseconds(stamp.modified)) < kFresh;
}

}  // namespace

RecordsNews::RecordsNews(const std::filesystem::path& stateFolder)
    : file_(stateFolder / kRecordsFile), log_(file_.string() + "-wal") {}

bool RecordsNews::AreThere() {
  const FileStamp file = std::exchange(fileStamp_, StampOf(file_));
  const FileStamp log = std::exchange(logStamp_, StampOfLog(log_));
  const bool wasFresh = std::exchange(isFresh_, IsFresh(fileStamp_) || IsFresh(logStamp_));
  return wasFresh || !(file == fileStamp_) || !(log == logStamp_);
}

}  // namespace recorder
