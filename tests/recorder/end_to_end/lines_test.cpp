#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>

#include "rig/recorder.h"

// Answers that are told in lines, by a worker of the test's own behind the real web server.

using namespace rig;

using testing::HasSubstr;
using testing::Not;

namespace {

const TestRecorder::Options kOptions = {.serveArguments = {"--worker", LINE_RESPONDER}};

Connection Ask(const TestRecorder& recorder, const std::string& path) {
  Connection connection(recorder.Port(), std::chrono::seconds(60));
  connection.Send(HttpRequest("POST", path, recorder.Login(), "{}"));
  return connection;
}

}  // namespace

TEST(Lines, ArriveBeforeTheLastIsFoundOut) {
  const TestRecorder recorder(kOptions);
  const TempFolder folder;
  const std::filesystem::path file = folder.Path() / "go-on";
  const Connection connection = Ask(recorder, "/recorder/1/wait?" + file.string());
  const std::string first = connection.ReceiveUntil("{\"line\":\"first\"}\n");
  EXPECT_EQ(HeaderOf(first, "Content-Type"), "application/x-ndjson");
  EXPECT_THAT(first, Not(HasSubstr("success")));
  std::ofstream(file) << "now";
  EXPECT_THAT(connection.ReceiveUntil("}\n\r\n0\r\n\r\n"), HasSubstr(R"({"data":"last","success":true})"));
}

TEST(Lines, EndWhenWhoeverAskedHasGone) {
  const TestRecorder recorder(kOptions);
  const TempFolder folder;
  const std::filesystem::path file = folder.Path() / "ended";
  Ask(recorder, "/recorder/1/on?" + file.string()).ReceiveUntil("first");
  while (!std::filesystem::exists(file)) usleep(10'000);
  EXPECT_THAT(Ask(recorder, "/recorder/1/wait?" + file.string()).ReceiveUntil("success"), HasSubstr("last"));
}
