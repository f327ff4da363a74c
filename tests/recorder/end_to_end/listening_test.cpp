#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "rig/cameras.h"

// A recorder that other machines can ask, for which 127.0.0.2 stands here.

using namespace rig;

using testing::HasSubstr;

namespace {

void Open(const TestRecorder& recorder) {
  recorder.AddTester();
  ASSERT_EQ(recorder.Control({"certificate", "make"}).status, 0);
}

const TestRecorder::Options kOpen = {.testMs = 3000, .serveArguments = {"--listen", "127.0.0.2:0"}, .prepare = &Open};

std::filesystem::path Certificate(const TestRecorder& recorder) { return recorder.StateFolder() / "certificate.pem"; }

/// A POST over TLS, by a name that is in the certificate.
std::vector<std::string> Post(const TestRecorder& recorder, const std::string& certificate, const std::string& method,
                              const Json::Value& params) {
  std::vector<std::string> command = Words("/usr/bin/curl -sS --connect-to ::127.0.0.2: --cacert " + certificate);
  const std::string login = "Authorization: " + recorder.Login().at("Authorization");
  const std::string address = "https://localhost:" + std::to_string(recorder.Port()) + kApi + method;
  command.insert(command.end(), {"-H", login, "--json", ToText(params), address});
  return command;
}

std::string Ask(const TestRecorder& recorder, const std::string& certificate, const std::string& method,
                const Json::Value& params = Json::objectValue) {
  return Process(Post(recorder, certificate, method, params)).ReadAll();
}

/// Waits a while until it is true.
bool Becomes(const std::function<bool()>& isTrue) {
  for (int tries = 0; tries < 1000 && !isTrue(); ++tries) usleep(20'000);
  return isTrue();
}

}  // namespace

TEST(Listening, WhereOtherMachinesCanAskWantsTlsAndAUser) {
  const TestRecorder recorder(kOpen);
  const std::string place = "127.0.0.2:" + std::to_string(recorder.Port());
  const auto serve = [&] { return recorder.Control({"serve", "--listen", place}); };
  for (const auto& [file, command] :
       {std::pair("certificate.pem", "certificate make"), {"users", "user add admin --random"}}) {
    std::filesystem::remove(recorder.StateFolder() / file);
    const Finished refused = serve();
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.output, HasSubstr(std::string("\"recorderctl ") + command + '"'));
    EXPECT_EQ(recorder.Control(Words(command)).status, 0);
  }
  EXPECT_THAT(serve().output, HasSubstr("the web server did not start")) << "for now the port is taken";
}

TEST(Listening, IsAtItsAddressAloneAndClosedToItself) {
  const TestRecorder recorder(kOpen);
  const std::string certificate = Certificate(recorder);
  EXPECT_THAT(Ask(recorder, certificate, "CameraModelEnum"), HasSubstr("\"success\":true"));
  EXPECT_THAT(recorder.Log(), testing::Not(HasSubstr(" ends on ")));
  EXPECT_THROW(HttpClient(recorder.Port()).Ask("GET / HTTP/1.0\r\n\r\n"), NoAnswer) << "at 127.0.0.1";
  EXPECT_THAT(recorder.Control({"link"}).output, HasSubstr("https://127.0.0.2:" + std::to_string(recorder.Port())));
  for (const char* own : {"127.0.0.2", "127.0.0.1"}) {
    Json::Value params = CameraParams(recorder.Port(), kSecret);
    params["camIP"] = own;
    EXPECT_THAT(Ask(recorder, certificate, "CameraTest", params), HasSubstr("468"));
    EXPECT_THAT(recorder.Log(), HasSubstr("address not allowed by this recorder's policy"));
  }
}

TEST(Listening, TakesARenewedCertificateAndLosesNoRequest) {
  const SimCameras cameras(List({Faulty("silent", "silentAfterConnect")}));
  const TestRecorder recorder(kOpen);
  const TempFolder folder;
  const std::string before = folder.Write("before.pem", ReadText(Certificate(recorder)));
  const auto answers = [&](const std::string& certificate) {
    return Ask(recorder, certificate, "CameraModelEnum").find("\"success\":true") != std::string::npos;
  };
  Process slow(Post(recorder, before, "CameraTest", CameraParams(cameras.Port("silent"), kSecret)));
  ASSERT_TRUE(Becomes([&] { return cameras.Log("silent")["connections"].asInt() > 0; }));
  ASSERT_EQ(recorder.Control({"certificate", "make"}).status, 0);
  EXPECT_TRUE(Becomes([&] { return answers(Certificate(recorder)); }));
  EXPECT_FALSE(answers(before));
  EXPECT_THAT(slow.ReadAll(), HasSubstr("463")) << "it was at hand meanwhile";

  const std::string renewed = folder.Write("renewed.pem", ReadText(Certificate(recorder)));
  for (const std::string& broken : {std::string("no certificate"), ReadText(before)}) {
    const std::size_t logged = recorder.Log().size();
    std::ofstream(Certificate(recorder)) << broken;
    EXPECT_TRUE(Becomes([&] { return recorder.Log().find(" cannot be used: ", logged) != std::string::npos; }));
    EXPECT_TRUE(answers(renewed)) << "the one of before stays";
  }
}
