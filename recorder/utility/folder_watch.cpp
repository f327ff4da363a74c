#include "recorder/utility/folder_watch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <cstring>
#include <string_view>
#include <utility>

namespace recorder {

namespace {

FileDescriptor Watch(const std::filesystem::path& folder) {
  constexpr std::uint32_t kChanges =
      IN_MODIFY | IN_ATTRIB | IN_CREATE | IN_DELETE | IN_MOVE | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
  FileDescriptor events(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
  const bool isWatched = events && inotify_add_watch(events.Get(), folder.c_str(), kChanges) >= 0;
  return isWatched ? std::move(events) : FileDescriptor();
}

/// True when a folder that was watched is no longer there.
bool TellsOfItsEnd(std::string_view events) {
  while (!events.empty()) {
    inotify_event event{};
    std::memcpy(&event, events.data(), sizeof(event));
    if ((event.mask & (IN_IGNORED | IN_MOVE_SELF)) != 0) return true;
    events.remove_prefix(sizeof(event) + event.len);
  }
  return false;
}

}  // namespace

FolderWatch::FolderWatch(std::filesystem::path folder, Clock::time_point from)
    : folder_(std::move(folder)), from_(from) {}

bool FolderWatch::MayHaveChanged() {
  const Clock::time_point now = Clock::now();
  if (now < from_) return true;
  const bool mayHaveChanged = HasNews() || now >= lookAt_;
  if (mayHaveChanged) lookAt_ = now + kLongestTrust;
  return mayHaveChanged;
}

/// Reads all that the system has said. A folder that went, or is not watched yet, is watched anew, where it is now.
bool FolderWatch::HasNews() {
  bool hasNews = !events_;
  bool isGone = !events_;
  alignas(inotify_event) char buffer[4096];
  ssize_t size = 0;
  while (events_ && (size = read(events_.Get(), buffer, sizeof(buffer))) > 0) {
    hasNews = true;
    isGone = isGone || TellsOfItsEnd({buffer, static_cast<std::size_t>(size)});
  }
  if (isGone) events_ = Watch(folder_);
  return hasNews;
}

}  // namespace recorder
