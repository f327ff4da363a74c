#include "recorder/watch/checkers.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <set>
#include <thread>

#include "tests/recorder/rows.h"

namespace recorder {
namespace {

using std::chrono::milliseconds;
using Kind = CheckAnswer::Kind;

/// What a checker of the tests does, by the name of the method.
CheckAnswer Work(const CheckJob& job) {
  if (job.method == "throw") throw std::runtime_error("no such method");
  if (job.method == "die") std::raise(SIGKILL);
  if (job.method == "hang") pause();
  if (job.method == "wait") std::this_thread::sleep_for(milliseconds(200));
  return {.kind = Kind::kAnswered, .causes = job.params["text"].asString() + std::to_string(getpid())};
}

/// All answers to the jobs that were started, as they come.
std::vector<CheckAnswer> WaitFor(Checkers& checkers, std::size_t count) {
  std::vector<CheckAnswer> answers;
  while (answers.size() < count) {
    std::vector<pollfd> waited;
    checkers.AddTo(waited);
    const auto left = std::chrono::ceil<milliseconds>(checkers.TakeAt() - Clock::now());
    poll(waited.data(), waited.size(), static_cast<int>(std::max(left, milliseconds(0)).count()));
    for (CheckAnswer& answer : checkers.Take()) answers.push_back(std::move(answer));
  }
  return answers;
}

struct JobCase {
  const char* name;
  const char* method;
  std::string text;
  Kind kind;
};

const JobCase kJobs[] = {
    {"Answers", "answer", "ä\n\"", Kind::kAnswered},
    {"IsLarge", "answer", std::string(std::size_t{1} << 20, 'x'), Kind::kAnswered},
    {"Fails", "throw", "", Kind::kFailed},
    {"Dies", "die", "", Kind::kDied},
    {"TakesTooLong", "hang", "", Kind::kDied},
};

class CheckersTest : public testing::TestWithParam<JobCase> {};

TEST_P(CheckersTest, TellWhatBecameOfAJobAndDoTheNext) {
  const bool isHung = std::string(GetParam().method) == "hang";
  Checkers checkers(Work, {.job = isHung ? milliseconds(100) : std::chrono::minutes(2)});
  for (const std::uint64_t id : {7U, 8U}) {
    CheckJob job{.id = id, .method = GetParam().method};
    job.params["text"] = GetParam().text;
    ASSERT_TRUE(checkers.Start(job));
    const CheckAnswer answer = WaitFor(checkers, 1).front();
    EXPECT_EQ(answer.id, id);
    EXPECT_EQ(answer.kind, GetParam().kind);
    const bool isAnswered = answer.kind == Kind::kAnswered;
    EXPECT_EQ(answer.causes.substr(0, GetParam().text.size()), isAnswered ? GetParam().text : "");
  }
}

INSTANTIATE_TEST_SUITE_P(Job, CheckersTest, testing::ValuesIn(kJobs), kByName);

TEST(Checkers, WorkSideBySideInNoMoreProcessesThanAllowed) {
  Checkers checkers(Work, {.most = 3, .job = std::chrono::seconds(20)});
  std::set<std::string> processes;
  for (int round = 0; round < 2; ++round) {
    for (std::uint64_t id = 0; id < 3; ++id) EXPECT_TRUE(checkers.Start({.id = id, .method = "wait"}));
    EXPECT_EQ(checkers.Free(), 0U);
    for (const CheckAnswer& answer : WaitFor(checkers, 3)) processes.insert(answer.causes);
    EXPECT_EQ(checkers.Free(), 3U);
  }
  EXPECT_EQ(processes.size(), 3U);
}

TEST(Checkers, EndWhenThereIsNothingToDo) {
  Checkers checkers(Work, {.idle = std::chrono::seconds(0), .job = std::chrono::seconds(20)});
  ASSERT_TRUE(checkers.Start({.method = "answer"}));
  const pid_t process = std::stoi(WaitFor(checkers, 1).front().causes);
  checkers.Take();
  EXPECT_NE(kill(process, 0), 0);
  EXPECT_EQ(checkers.TakeAt(), Clock::time_point::max());
}

}  // namespace
}  // namespace recorder
