#include "recorder/own/process_memory.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

namespace recorder {

namespace {

std::string FolderOf(pid_t process) { return "/proc/" + std::to_string(process); }

/// What copies of a process still hold together with it is divided among them. Negative: it cannot be read.
double DividedBytes(pid_t process) {
  std::ifstream file(FolderOf(process) + "/smaps_rollup");
  for (std::string name; file >> name;) {
    double kibibytes = -1;
    if (name == "Pss_Anon:" && file >> kibibytes) return kibibytes * 1024;
  }
  return -1;
}

double WholeBytes(pid_t process) {
  long size = 0;
  long resident = 0;
  long shared = 0;
  std::ifstream(FolderOf(process) + "/statm") >> size >> resident >> shared;
  return static_cast<double>(resident - shared) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

}  // namespace

double OwnBytesOfAll(pid_t process) {
  const double divided = DividedBytes(process);
  double bytes = divided < 0 ? WholeBytes(process) : divided;
  std::error_code ended;
  for (const auto& thread : std::filesystem::directory_iterator(FolderOf(process) + "/task", ended)) {
    std::ifstream children(thread.path() / "children");
    for (pid_t child = 0; children >> child;) bytes += OwnBytesOfAll(child);
  }
  return bytes;
}

}  // namespace recorder
