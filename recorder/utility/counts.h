#pragma once

#include <sys/types.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string_view>

namespace recorder {

/// Counts up; any thread and process.
using Counter = std::atomic<std::uint64_t>;
static_assert(Counter::is_always_lock_free, "processes share them");

/// Answer times are counted by these bounds, in seconds, and one more for all that is slower.
inline constexpr std::array kTimeBounds = {0.001, 0.005, 0.01, 0.05, 0.1, 0.5, 1.0, 2.5, 5.0, 10.0, 15.0};

/// What requests are counted as: some methods by their names, all others together.
inline constexpr std::array<std::string_view, 5> kCountedMethods = {"GetSnapshot", "CameraTest", "CamBatAddVerify",
                                                                    "recorder", "other"};
/// Redirections and what has not changed are among the first.
inline constexpr std::array<std::string_view, 3> kStatusClasses = {"2xx", "4xx", "5xx"};

/// Programs whose processes are replaced when they die. Checkers and what tells the webhook are copies of
/// recorder-watch.
enum class Program { kWorker, kLogin, kWatch, kMedia };
inline constexpr std::array<std::string_view, 4> kPrograms = {"recorder-webapi", "recorder-login", "recorder-watch",
                                                              "recorder-media"};  // in the order of Program

/// Times that were measured, in all.
struct TimeSum {
  Counter count;
  Counter microseconds;

  void Add(std::chrono::microseconds time);
};

/// One process of a pool, which `recorderctl serve` enters and the process itself marks as busy.
struct WorkerCount {
  std::atomic<pid_t> process;  ///< 0: none
  std::atomic<bool> isBusy;
  std::atomic<std::size_t> user;  ///< hash of the name of whom it works for; 0: it does not say
  Counter answered;               ///< requests, by all processes that had this place

  bool IsThere() const { return process != 0; }
  bool IsFree() const { return IsThere() && !isBusy; }
};

/// As many as a pool may have.
inline constexpr std::size_t kMostWorkers = 64;
using PoolCount = std::array<WorkerCount, kMostWorkers>;

/// Requests that a pool has answered.
std::uint64_t AnsweredBy(const PoolCount& pool);

/// What the processes of one server count together, in a file that each of them maps. All begins with 0.
struct Counts {
  std::array<std::array<Counter, kStatusClasses.size()>, kCountedMethods.size()> requests;
  std::array<Counter, kTimeBounds.size() + 1> times;
  TimeSum answers;
  TimeSum keyFrames;  ///< how long pictures waited for one
  Counter refusedLogins;
  std::array<Counter, kPrograms.size()> ended;  ///< processes, see Program
  PoolCount logins;
  PoolCount cameraWorkers;
  PoolCount listWorkers;

  /// Counts a request that was answered, and how long that took.
  void AddRequest(std::string_view method, long status);
  void AddTime(std::chrono::microseconds time);
  /// Counts a process that died, or had to be ended.
  void AddEnd(Program program) { ++ended[static_cast<std::size_t>(program)]; }
};

/// The variable of the environment that names the file.
inline constexpr char kCountsVariable[] = "RECORDER_COUNTS";

/// Makes the file, and names it to this process and its children. Throws std::system_error.
void MakeCounts(const std::filesystem::path& file);

/// Those in the file of kCountsVariable; where there is none, of this process alone. Any thread.
Counts& SharedCounts();

/// Says for whom the calling process works, until its BusyMark ends. True if half of its pool does so beside it.
bool HasHalfOfPool(std::string_view user);

/// Marks the calling process as busy while it lives, and counts a request of it at its end.
class BusyMark {
 public:
  BusyMark();
  ~BusyMark();
  BusyMark(const BusyMark&) = delete;
  BusyMark& operator=(const BusyMark&) = delete;
};

}  // namespace recorder
