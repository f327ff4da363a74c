#include "recorder/utility/log.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <regex>

#include "platform/utility.h"

namespace recorder {
namespace {

TEST(LogTest, ACallerCannotForgeALine) {
  testing::internal::CaptureStderr();
  VTPrintf(LOG_TYPE_FAILURE, nullptr, nullptr, "cameracap", 685, "Get", "No [%s]!\n", "a\n2026 \x1b[31m\\\xc2\x9bÄ");
  const std::string text = testing::internal::GetCapturedStderr();
  const std::regex start(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z )" + std::to_string(getpid()) + ' ');
  std::smatch match;
  ASSERT_TRUE(std::regex_search(text, match, start, std::regex_constants::match_continuous)) << text;
  EXPECT_EQ(match.suffix().str(), R"(cameracap:685 Get: No [a\n2026 \x1b[31m\\\xc2\x9bÄ]!)"
                                  "\n");
}

TEST(LogTest, NoTextEndsBeforeItsEnd) {
  testing::internal::CaptureStderr();
  LogFailure(std::string("no\0host", 7));
  EXPECT_TRUE(testing::internal::GetCapturedStderr().ends_with("no\\x00host\n"));
}

TEST(LogTest, ALongLineIsCut) {
  testing::internal::CaptureStderr();
  LogFailure("é" + std::string(6000, 'x'));
  const std::string text = testing::internal::GetCapturedStderr();
  EXPECT_EQ(text.size(), 4096U);
  EXPECT_TRUE(text.ends_with("xx...\n"));
}

}  // namespace
}  // namespace recorder
