#include "recorder/utility/log.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <regex>
#include <sstream>

#include "platform/utility.h"
#include "recorder/utility/json_text.h"

namespace recorder {
namespace {

TEST(LogTest, ACallerCannotForgeALine) {
  testing::internal::CaptureStderr();
  VTPrintf(LOG_TYPE_FAILURE, nullptr, nullptr, "cameracap", 685, "Get", "No [%s]!\n",
           "a\n2026 \x1b[31m\\\xc2\x9bÄ\u202e");
  const std::string text = testing::internal::GetCapturedStderr();
  const std::regex start(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z )" + std::to_string(getpid()) + ' ');
  std::smatch match;
  ASSERT_TRUE(std::regex_search(text, match, start, std::regex_constants::match_continuous)) << text;
  EXPECT_EQ(match.suffix().str(), R"(cameracap:685 Get: No [a\n2026 \x1b[31m\\\xc2\x9bÄ\xe2\x80\xae]!)"
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

TEST(LogTest, TheJournalIsToldThePriority) {
  testing::internal::CaptureStderr();
  struct stat status {};
  fstat(STDERR_FILENO, &status);
  setenv("JOURNAL_STREAM", (std::to_string(status.st_dev) + ':' + std::to_string(status.st_ino)).c_str(), 1);
  LogFailure("x");
  LogNote("request", {{"status", 200}});
  unsetenv("JOURNAL_STREAM");
  const std::string text = testing::internal::GetCapturedStderr();
  EXPECT_TRUE(std::regex_match(text, std::regex("<4>2[^\n]*: x\n<6>2[^\n]* request: status=200\n"))) << text;
}

TEST(LogTest, EachEntryInJsonIsOneWholeObject) {
  SetLogFormat(LogFormat::kJson);
  const RequestInLog named("a-1", RequestInLog::Entries::kOfProcess);
  testing::internal::CaptureStderr();
  LogFailure("\"\n\x9b" + std::string(6000, '\x01'));
  VTPrintf(LOG_TYPE_FAILURE, "media", nullptr, "cameracap", 685, "Get", "No!\n");
  SetLogFormat(LogFormat::kText);
  std::istringstream lines(testing::internal::GetCapturedStderr());
  std::string text;
  std::string mistakes;
  ASSERT_TRUE(std::getline(lines, text) && text.size() < 4096 && ParseStrictJson(text, mistakes)) << mistakes << text;
  std::getline(lines, text);
  const Json::Value entry = ParseStrictJson(text, mistakes).value();
  EXPECT_EQ(entry["request"], "a-1");
  EXPECT_EQ(entry["place"], "cameracap:685 Get");
  EXPECT_EQ(entry["text"], "[media] No!");
}

}  // namespace
}  // namespace recorder
