#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <future>
#include <string>
#include <vector>

#include "rig/cameras.h"
#include "rig/processes.h"
#include "rig/recorder.h"

/// Kills the recorder-watch that the others are copies of.
inline void KillWatch() {
  const auto processes = rig::Descendants(getpid(), "recorder-watch");
  ASSERT_FALSE(processes.empty());
  EXPECT_TRUE(rig::Kill(processes.front()));
}

/// The list of what `make` makes of each row.
template <class Rows, class Make>
Json::Value ListOf(const Rows& rows, Make make) {
  Json::Value list(Json::arrayValue);
  for (const auto& row : rows) list.append(make(row));
  return list;
}

/// How many have this status of `times` answers that are asked for at once, each by a call of ask(number), from 0 on.
template <class Ask>
long CountAtOnce(int times, int status, Ask ask) {
  std::vector<std::future<int>> asked(static_cast<std::size_t>(times));
  for (int number = 0; auto& one : asked) one = std::async(std::launch::async, ask, number++);
  return std::ranges::count_if(asked, [status](std::future<int>& one) { return one.get() == status; });
}

/// Asks, and expects the code that `method` tells and its cause, which is "ok" for code 0.
inline rig::Answer ExpectAnswer(const rig::TestRecorder& recorder, const char* method, const Json::Value& params,
                                int code, const std::string& cause) {
  rig::Answer answer = recorder.Post(method, params);
  EXPECT_EQ(rig::CodeIn(answer, method), code) << method;
  EXPECT_EQ(answer.cause, code == 0 ? "ok" : cause) << method;
  return answer;
}
