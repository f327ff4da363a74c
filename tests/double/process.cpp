// What the code under test asks of the C library, taken over by the linker (--wrap) in the objects that are linked into
// the test program. Unlike a definition of the plain names this leaves the sanitizers' own interceptors in place.

#include <pthread.h>

#include <cerrno>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <set>

#include "tests/double/script.h"

// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names
extern "C" {
void __real_free(void* block);
int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*), void* argument);
int __real_pthread_join(pthread_t thread, void** result);
}
// NOLINTEND(bugprone-reserved-identifier)

namespace scripted {
namespace {

struct Worker {
  int number;
  void* (*body)(void*);
  void* argument;
  bool joinFails;
  pthread_t id{};
  bool running = false;
};

struct Process {
  std::mutex mutex;
  std::condition_variable changed;
  bool caseEnds = false;
  std::deque<Worker> workers;  // of this case, by number from 1
  std::set<int> failingStarts;
  std::map<int, int> failingJoins;   // worker to errno
  std::vector<void*> keptArguments;  // what the module gave up for ever, here for the leak checker's sake
  std::set<void*> pictures;
};

Process& TheProcess() {
  static auto* process = new Process;
  return *process;
}

void* RunWorker(void* argument) {
  auto& worker = *static_cast<Worker*>(argument);
  CurrentWorker() = worker.number;
  if (worker.joinFails) {
    Process& process = TheProcess();
    std::unique_lock lock{process.mutex};
    process.changed.wait(lock, [&] { return process.caseEnds; });
  }
  if (worker.body(worker.argument) != nullptr) Fault("a worker returned something");
  return nullptr;
}

}  // namespace

void FailStart(int worker) { TheProcess().failingStarts.insert(worker); }
void FailJoin(int worker, int errorNumber) { TheProcess().failingJoins[worker] = errorNumber; }

std::string ThreadId(int worker) {
  Process& process = TheProcess();
  const std::lock_guard lock{process.mutex};
  return std::to_string(static_cast<int>(process.workers.at(size_t(worker) - 1).id));
}

void FinishWorkers() {
  Process& process = TheProcess();
  {
    const std::lock_guard lock{process.mutex};
    process.caseEnds = true;
  }
  process.changed.notify_all();
  for (const Worker& worker : process.workers) {
    if (!worker.running) continue;
    if (!worker.joinFails) Fault("worker " + std::to_string(worker.number) + " was not joined");
    __real_pthread_join(worker.id, nullptr);
    process.keptArguments.push_back(worker.argument);
  }
  process.workers.clear();
  process.failingStarts.clear();
  process.failingJoins.clear();
  process.caseEnds = false;
}

int TakePicture(const Json::Value& answer, unsigned char** picture, int* size) {
  if (!answer.isArray()) return answer.asInt();
  const std::string bytes = answer[1].asString();
  *picture = static_cast<unsigned char*>(std::malloc(bytes.size() + 1));
  *size = static_cast<int>(bytes.copy(reinterpret_cast<char*>(*picture), bytes.size()));
  Process& process = TheProcess();
  const std::lock_guard lock{process.mutex};
  process.pictures.insert(*picture);
  return answer[0].asInt();
}

void FinishPictures() {
  Process& process = TheProcess();
  const std::lock_guard lock{process.mutex};
  if (!process.pictures.empty()) Fault(std::to_string(process.pictures.size()) + " pictures were never freed");
  process.pictures.clear();
}

}  // namespace scripted

using scripted::TheProcess;

// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names
extern "C" {

void __wrap_free(void* block) {
  {
    const std::lock_guard lock{TheProcess().mutex};
    TheProcess().pictures.erase(block);
  }
  __real_free(block);
}

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*), void* argument) {
  auto& process = TheProcess();
  const std::lock_guard lock{process.mutex};
  const int number = static_cast<int>(process.workers.size()) + 1;
  auto& worker =
      process.workers.emplace_back(scripted::Worker{number, body, argument, process.failingJoins.count(number) != 0});
  const bool fails = process.failingStarts.count(number) != 0;
  scripted::Write("pthread_create #" + std::to_string(number) + (attributes != nullptr ? " with attributes" : "") +
                  (fails ? " fails" : ""));
  if (fails) return EAGAIN;
  worker.running = __real_pthread_create(&worker.id, attributes, scripted::RunWorker, &worker) == 0;
  *thread = worker.id;
  return worker.running ? 0 : EAGAIN;
}

int __wrap_pthread_join(pthread_t thread, void** result) {
  scripted::Worker* worker = nullptr;
  auto& process = TheProcess();
  {
    const std::lock_guard lock{process.mutex};
    for (auto& candidate : process.workers) {
      if (candidate.running && pthread_equal(candidate.id, thread) != 0) worker = &candidate;
    }
  }
  if (worker == nullptr) {
    scripted::Fault("a join of a thread that is not running");
    return ESRCH;
  }
  scripted::Write("pthread_join #" + std::to_string(worker->number) + (result != nullptr ? " with result" : ""));
  if (worker->joinFails) {
    errno = process.failingJoins[worker->number];
    return EINVAL;
  }
  const int status = __real_pthread_join(thread, result);
  worker->running = false;
  return status;
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
