#include "rig/processes.h"

extern "C" {
#include <sys/pidfd.h>  // glibc 2.36 forgets to say that it is C
}
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <map>
#include <sstream>
#include <string_view>

#include "rig/recorder.h"

namespace rig {

namespace fs = std::filesystem;

namespace {

fs::path Folder(pid_t process) { return fs::path("/proc") / std::to_string(process); }

/// "" for a process that has ended, which may happen meanwhile.
std::string Told(pid_t process, const char* file) { return ReadText(Folder(process) / file); }

struct Status {
  char state = 'Z';
  pid_t parent = -1;
};

/// The program's name stands in brackets and may hold anything, so reading begins behind it.
Status StatusOf(pid_t process) {
  const std::string line = Told(process, "stat");
  Status status;
  const std::size_t nameEnd = line.rfind(')');
  if (nameEnd != std::string::npos) std::istringstream(line.substr(nameEnd + 1)) >> status.state >> status.parent;
  return status;
}

std::multimap<pid_t, pid_t> ChildrenByParent() {
  std::multimap<pid_t, pid_t> children;
  for (const auto& entry : fs::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    pid_t process = -1;
    if (std::from_chars(name.data(), name.data() + name.size(), process).ec != std::errc()) continue;
    const Status status = StatusOf(process);
    if (status.state != 'Z') children.emplace(status.parent, process);
  }
  return children;
}

ProcessInfo Describe(pid_t process) {
  ProcessInfo info{process, "", {}};
  std::error_code ended;
  info.program = fs::read_symlink(Folder(process) / "exe", ended).filename();
  std::istringstream words(Told(process, "cmdline"));
  for (std::string word; std::getline(words, word, '\0');) info.words.push_back(word);
  return info;
}

/// The number behind a name at the beginning of a line; 0 without one.
long FigureOf(pid_t process, const char* file, std::string_view name) {
  std::istringstream lines(Told(process, file));
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(name)) return std::stol(line.substr(name.size()));
  }
  return 0;
}

void AddDescendants(pid_t ancestor, const std::multimap<pid_t, pid_t>& children, std::vector<ProcessInfo>& all) {
  const auto [first, last] = children.equal_range(ancestor);
  for (auto child = first; child != last; ++child) {
    all.push_back(Describe(child->second));
    AddDescendants(child->second, children, all);
  }
}

}  // namespace

std::vector<ProcessInfo> Descendants(pid_t ancestor) {
  std::vector<ProcessInfo> all;
  AddDescendants(ancestor, ChildrenByParent(), all);
  return all;
}

std::vector<ProcessInfo> Descendants(pid_t ancestor, const std::string& program) {
  std::vector<ProcessInfo> found = Descendants(ancestor);
  std::erase_if(found, [&](const ProcessInfo& process) { return process.program != program; });
  return found;
}

long ResidentKiB(pid_t process) {
  return FigureOf(process, "smaps_rollup", "Rss:");  // "statm" lags behind by some pages
}

long PeakKiB(pid_t process) { return FigureOf(process, "status", "VmHWM:"); }

int OpenDescriptors(pid_t process) {
  std::error_code ended;
  return static_cast<int>(std::distance(fs::directory_iterator(Folder(process) / "fd", ended), {}));
}

bool Kill(const ProcessInfo& process) {
  const int handle = pidfd_open(process.id, 0);
  if (handle < 0) return false;
  const bool isSame = Describe(process.id).words == process.words;
  const bool isKilled = isSame && pidfd_send_signal(handle, SIGKILL, nullptr, 0) == 0;
  close(handle);
  return isKilled;
}

}  // namespace rig
