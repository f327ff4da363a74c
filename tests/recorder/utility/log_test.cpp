#include "recorder/utility/log.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <ctime>
#include <sstream>
#include <thread>
#include <vector>

#include "platform/utility.h"

namespace recorder {
namespace {

/// Lines that `action` logged.
template <class Action>
std::vector<std::string> Logged(Action action) {
  testing::internal::CaptureStderr();
  action();
  std::istringstream text{testing::internal::GetCapturedStderr()};
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  return lines;
}

TEST(LogTest, ACallerCannotForgeALine) {
  const auto lines = Logged([] {
    VTPrintf(LOG_TYPE_FAILURE, nullptr, nullptr, "cameracap", 685, "Get", "No [%s]!\n", "a\n2026 \x1b[31m\\\xc2\x9bÄ");
  });
  ASSERT_EQ(lines.size(), 1U);
  const std::size_t place = lines[0].find(" cameracap:685 Get: ");
  ASSERT_NE(place, std::string::npos) << lines[0];
  EXPECT_EQ(lines[0].substr(place), R"( cameracap:685 Get: No [a\n2026 \x1b[31m\\\xc2\x9bÄ]!)");
  tm time{};
  const char* rest = strptime(lines[0].c_str(), "%Y-%m-%dT%H:%M:%S", &time);
  ASSERT_NE(rest, nullptr) << lines[0];
  EXPECT_EQ(*rest, '.');
  EXPECT_EQ(lines[0].substr(0, place), lines[0].substr(0, 23) + "Z " + std::to_string(getpid()));
}

TEST(LogTest, LongLinesAreCutAndThreadsDoNotMix) {
  constexpr int kLines = 50;
  const std::string text = "é" + std::string(3000, 'x');
  const auto lines = Logged([&text] {
    std::vector<std::thread> threads(4);
    for (auto& thread : threads) {
      thread = std::thread([&text] {
        for (int k = 0; k < kLines; ++k) LogFailure(text + text);
      });
    }
    for (auto& thread : threads) thread.join();
  });
  ASSERT_EQ(lines.size(), 4U * kLines);
  for (const auto& line : lines) {
    EXPECT_EQ(line.size(), 4095U);
    EXPECT_TRUE(line.ends_with("xx...")) << line.substr(line.size() - 20);
  }
}

}  // namespace
}  // namespace recorder
