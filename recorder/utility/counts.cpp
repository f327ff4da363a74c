#include "recorder/utility/counts.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <functional>
#include <new>
#include <system_error>

#include "recorder/utility/handle.h"

namespace recorder {

namespace {

/// Null when it cannot be mapped. It stays until the process ends.
Counts* Map(const char* file) {
  const FileDescriptor descriptor(open(file, O_RDWR | O_CLOEXEC));
  if (!descriptor) return nullptr;
  void* memory = mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor.Get(), 0);
  return memory == MAP_FAILED ? nullptr : static_cast<Counts*>(memory);
}

Counts& FindCounts() {
  static Counts ofThisProcess{};
  const char* file = std::getenv(kCountsVariable);  // NOLINT(concurrency-mt-unsafe): nobody sets variables
  Counts* shared = file == nullptr ? nullptr : Map(file);
  return shared == nullptr ? ofThisProcess : *shared;
}

/// The calling process in its pool; null for one of no pool.
struct OwnPlace {
  PoolCount* pool = nullptr;
  WorkerCount* entry = nullptr;
};

OwnPlace FindOwn() {
  Counts& counts = SharedCounts();
  for (PoolCount* pool : {&counts.cameraWorkers, &counts.listWorkers}) {
    auto* const own = std::ranges::find_if(*pool, [](const WorkerCount& worker) { return worker.process == getpid(); });
    if (own != pool->end()) return {pool, &*own};
  }
  return {};
}

const OwnPlace& Own() {
  static const OwnPlace own = FindOwn();
  return own;
}

std::size_t IndexOf(std::string_view method) {
  if (method.substr(method.find(' ') + 1).starts_with("/recorder/")) method = "recorder";
  const auto* const found = std::ranges::find(kCountedMethods, method);
  return std::min<std::size_t>(static_cast<std::size_t>(found - kCountedMethods.begin()), kCountedMethods.size() - 1);
}

}  // namespace

void TimeSum::Add(std::chrono::microseconds time) {
  ++count;
  microseconds += static_cast<std::uint64_t>(time.count());
}

void Counts::AddRequest(std::string_view method, long status) {
  ++requests[IndexOf(method)][status < 400 ? 0 : status < 500 ? 1 : 2];
}

void Counts::AddTime(std::chrono::microseconds time) {
  const auto* const bound = std::ranges::lower_bound(kTimeBounds, std::chrono::duration<double>(time).count());
  ++times[static_cast<std::size_t>(bound - kTimeBounds.begin())];
  answers.Add(time);
}

void MakeCounts(const std::filesystem::path& file) {
  const FileDescriptor made(open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  if (!made || ftruncate(made.Get(), sizeof(Counts)) != 0) {
    throw std::system_error(errno, std::generic_category(), file.string());
  }
  setenv(kCountsVariable, file.c_str(), 1);  // NOLINT(concurrency-mt-unsafe): before there are threads
}

Counts& SharedCounts() {
  static Counts& counts = FindCounts();
  return counts;
}

std::uint64_t AnsweredBy(const PoolCount& pool) {
  std::uint64_t sum = 0;
  for (const WorkerCount& worker : pool) sum += worker.answered;
  return sum;
}

bool HasHalfOfPool(std::string_view user) {
  const auto& [pool, own] = Own();
  if (own == nullptr) return false;
  own->user = std::hash<std::string_view>()(user);
  const std::size_t id = own->user;
  const auto others = std::ranges::count_if(
      *pool, [&, own = own](const WorkerCount& worker) { return &worker != own && worker.user == id; });
  return others * 2 >= std::ranges::count_if(*pool, &WorkerCount::IsThere);
}

BusyMark::BusyMark() {
  if (Own().entry != nullptr) Own().entry->isBusy = true;
}

BusyMark::~BusyMark() {
  if (Own().entry == nullptr) return;
  Own().entry->user = 0;
  Own().entry->isBusy = false;
  ++Own().entry->answered;
}

}  // namespace recorder
