#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sodium.h>

#include <functional>
#include <future>

#include "recorder/records/records.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/secrets.h"
#include "rig/recorder.h"
#include "tests/recorder/listen.h"

// What a server of somebody else's hears when a stored camera changes.

using namespace rig;
using recorder::Outcome;
using testing::HasSubstr;
using testing::Not;

namespace {

const std::string kSignedWith = "a secret of thirty-two bytes ...";

/// That server.
class Receiver {
 public:
  std::string Url() const { return "http://127.0.0.1:" + std::to_string(listening_.second) + "/cameras?of=us"; }

  /// Waits for what is told, answers `status`, or hangs up if that is "", and looks at the signature.
  Json::Value Take(
      const std::string& status, const std::function<void()>& meanwhile = [] {}) const {
    const Connection connection(listening_.first);
    std::string bytes;
    while (MessageSize(bytes) == 0 && connection.Receive(bytes)) continue;
    meanwhile();
    if (!status.empty()) connection.Send("HTTP/1.1 " + status + "\r\nContent-Length: 0\r\n\r\n");
    const std::string body = bytes.substr(bytes.find("\r\n\r\n") + 4);
    EXPECT_THAT(bytes, testing::StartsWith("POST /cameras?of=us HTTP/1.1\r\n"));
    EXPECT_EQ(HeaderOf(bytes, "X-Signature"), "sha256=" + Hmac(body));
    return ParseJson(body);
  }

 private:
  static std::string Hmac(const std::string& text) {
    unsigned char hmac[crypto_auth_hmacsha256_BYTES];
    crypto_auth_hmacsha256(hmac, reinterpret_cast<const unsigned char*>(text.data()), text.size(),
                           reinterpret_cast<const unsigned char*>(kSignedWith.data()));
    return recorder::HexText(hmac);
  }

  const std::pair<recorder::FileDescriptor, int> listening_ = Listen();
};

class Webhook : public testing::Test {
 protected:
  Webhook() { recorder_.AddCamera("User", "", 554, "admin", "x", "1", "/live"); }

  Answer Send(const std::string& verb, const std::string& path, const Json::Value& body = {}) const {
    return recorder_.Send(verb, "/recorder/1/webhook" + path, recorder_.Login(), body.isNull() ? "" : ToText(body));
  }

  Answer Set(const std::string& url, const std::string& secret = "") const {
    Json::Value body;
    body["url"] = url;
    if (!secret.empty()) body["secret"] = secret;
    return Send("PUT", "", body);
  }

  void Note(Outcome cause) const {
    recorder::Records(recorder_.StateFolder()).NoteOutcome(1, {.cause = cause, .at = recorder::SecondsNow()});
  }

  const TestRecorder recorder_{{.watchSeconds = 3600}};
};

TEST_F(Webhook, IsToldEachChangeInItsOrderThoughItFailsMeanwhile) {
  const Receiver receiver;
  EXPECT_EQ(recorder_.Control({"camera", "edit", "1", "--name", "127.0.0.1"}).status, 0);
  Note(Outcome::kTimedOut);
  EXPECT_EQ(Set(receiver.Url(), kSignedWith).status, 200);
  Note(Outcome::kOk);
  EXPECT_EQ(receiver.Take("500 Broken")["id"], 2) << "what was before is not told";
  Note(Outcome::kBusy);
  EXPECT_EQ(Set(receiver.Url()).status, 200) << "with the secret that is there; nothing waits any more";
  const Json::Value told = receiver.Take("204 No Content");
  EXPECT_EQ(told["id"], 2) << "once more";
  EXPECT_EQ(told["kind"], "change");
  EXPECT_EQ(told["before"], "timedOut");
  EXPECT_EQ(told["name"], "") << "that was the camera's address";
  EXPECT_EQ(receiver.Take("200 OK")["id"], 3);
  auto tested = std::async(std::launch::async, [this] { return Send("POST", "/test"); });
  EXPECT_EQ(receiver.Take("201 Created")["kind"], "test");
  EXPECT_EQ(tested.get().json["data"]["status"], 201);
  tested = std::async(std::launch::async, [this] { return Send("POST", "/test"); });
  receiver.Take("");
  EXPECT_EQ(tested.get().json["error"]["cause"], "notUnderstood") << "it hung up";
  EXPECT_THAT(Send("GET", "").body + recorder_.Log(), Not(HasSubstr(kSignedWith)));
  EXPECT_EQ(Send("DELETE", "").status, 200);
  EXPECT_EQ(Send("POST", "/test").status, 404);
}

TEST_F(Webhook, ThatIsSetWhileAnotherIsToldIsToldAtOnceWhatComesThen) {
  const Receiver before;
  const Receiver after;
  EXPECT_EQ(Set(before.Url(), kSignedWith).status, 200);
  for (const Outcome cause : {Outcome::kOk, Outcome::kBusy, Outcome::kOk}) Note(cause);
  before.Take("200 OK", [&] { EXPECT_EQ(Set(after.Url(), kSignedWith).status, 200); });
  Note(Outcome::kBusy);
  EXPECT_EQ(after.Take("500 Broken")["id"], 4) << "what was before is not told";
  EXPECT_EQ(Send("DELETE", "").status, 200);
  EXPECT_EQ(Set(after.Url(), kSignedWith).status, 200);
  Note(Outcome::kOk);
  EXPECT_EQ(after.Take("200 OK")["id"], 5) << "a new webhook, which waits for nothing";
}

TEST_F(Webhook, IsRefusedWhereItMayNotBe) {
  for (const char* url : {"ftp://192.0.2.1/", "http://admin:x@192.0.2.1/", "192.0.2.1", ""}) {
    EXPECT_EQ(Set(url, kSignedWith).json["error"]["member"], "url") << url;
  }
  EXPECT_EQ(Set("http://169.254.169.254/").json["error"]["member"], "secret") << "there is none yet";
  EXPECT_EQ(Set("http://169.254.169.254/", kSignedWith).status, 200);
  EXPECT_EQ(Send("POST", "/test").json["error"]["cause"], "blocked") << "by the address policy";
  const std::string recorderItself = "http://127.0.0.1:" + std::to_string(recorder_.Port()) + "/healthz";
  EXPECT_EQ(Set(recorderItself).json["error"]["member"], "secret") << "that of another address is not lent";
  EXPECT_EQ(Set(recorderItself, kSignedWith).status, 200);
  Note(Outcome::kOk);
  Json::Value told;
  while (told["result"].isNull()) told = Send("GET", "").json["data"];
  EXPECT_EQ(told["result"], "blocked") << "the recorder itself";
}

}  // namespace
