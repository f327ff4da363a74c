#include "recorder/utility/folder_watch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <chrono>

namespace recorder {

namespace {

constexpr std::chrono::seconds kLongestTrust{1};

FileDescriptor Watch(const std::filesystem::path& folder) {
  constexpr std::uint32_t kChanges =
      IN_MODIFY | IN_ATTRIB | IN_CREATE | IN_DELETE | IN_MOVE | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
  FileDescriptor events(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
  const bool isWatched = events && inotify_add_watch(events.Get(), folder.c_str(), kChanges) >= 0;
  return isWatched ? std::move(events) : FileDescriptor();
}

}  // namespace

FolderWatch::FolderWatch(const std::filesystem::path& folder) : events_(Watch(folder)) {}

bool FolderWatch::MayHaveChanged() {
  const Clock::time_point now = Clock::now();
  const bool mayHaveChanged = HasNews() || now >= lookAt_;
  if (mayHaveChanged) lookAt_ = now + kLongestTrust;
  return mayHaveChanged;
}

/// Reads all that the system has said.
bool FolderWatch::HasNews() const {
  if (!events_) return true;
  alignas(inotify_event) char buffer[4096];
  bool hasNews = false;
  while (read(events_.Get(), buffer, sizeof(buffer)) > 0) hasNews = true;
  return hasNews;
}

}  // namespace recorder
