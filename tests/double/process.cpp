// What the code under test asks of the C library, taken over by the linker (--wrap) in the objects that are linked into
// the test program. Unlike a definition of the plain names this leaves the sanitizers' own interceptors in place.

#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <deque>

#include "tests/double/script.h"

// The linker's names of what is wrapped and of what wraps it.
using ThreadBody = void*(void*);
extern "C" int __real_pthread_create(pthread_t* id, const pthread_attr_t* attributes, ThreadBody* body, void* argument);
extern "C" int __real_pthread_join(pthread_t id, void** result);

namespace scripted {
namespace {

constexpr pthread_t kFirstId = 101;  // what the code under test knows worker 1 by

struct Worker {
  size_t number;
  ThreadBody* body;
  void* argument;
  pthread_t id{};
  bool running = false;

  std::string Create() const { return "pthread_create #" + std::to_string(number); }
  std::string Join() const { return "pthread_join #" + std::to_string(number); }
};

struct Process {
  std::deque<Worker> workers;  // of this case; only the test's own thread starts and joins
  std::atomic<bool> caseEnds = false;
  std::vector<void*> keptArguments;  // what the module gave up for ever, here for the leak checker's sake
};
Process& process = *new Process;

void* RunWorker(void* argument) {
  const auto& worker = *static_cast<Worker*>(argument);
  currentWorker = static_cast<int>(worker.number);
  if (IsScripted(worker.Join(), kFails)) process.caseEnds.wait(false);
  if (worker.body(worker.argument) != nullptr) Fault("a worker returned something");
  return nullptr;
}

}  // namespace

void FinishProcess() {
  process.caseEnds = true;
  process.caseEnds.notify_all();
  for (const Worker& worker : process.workers) {
    if (!worker.running) continue;
    if (!IsScripted(worker.Join(), kFails)) Fault("worker " + std::to_string(worker.number) + " was not joined");
    __real_pthread_join(worker.id, nullptr);
    process.keptArguments.push_back(worker.argument);
  }
  process.workers.clear();
  process.caseEnds = false;
}

int TakePicture(const Json::Value& answer, unsigned char** picture, int* size) {
  if (!answer.isArray()) return answer.asInt();
  const std::string bytes = answer[1].asString();
  *picture = static_cast<unsigned char*>(std::malloc(bytes.size() + 1));
  *size = static_cast<int>(bytes.copy(reinterpret_cast<char*>(*picture), bytes.size()));
  return answer[0].asInt();
}

}  // namespace scripted

using namespace scripted;

extern "C" int __wrap_pthread_create(pthread_t* id, const pthread_attr_t* attributes, ThreadBody* body,
                                     void* argument) {
  auto& worker = process.workers.emplace_back(Worker{process.workers.size() + 1, body, argument});
  Write(worker.Create());
  if (IsScripted(worker.Create(), kFails)) return EAGAIN;
  *id = kFirstId + worker.number - 1;
  worker.running = true;
  return __real_pthread_create(&worker.id, attributes, RunWorker, &worker);
}

extern "C" int __wrap_pthread_join(pthread_t id, void** result) {
  auto& worker = process.workers.at(id - kFirstId);
  Write(worker.Join());
  if (IsScripted(worker.Join(), kFails)) return errno = EDEADLK, EINVAL;
  worker.running = false;
  return __real_pthread_join(worker.id, result);
}
