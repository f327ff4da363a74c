#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>

#include "rig/processes.h"
#include "tests/recorder/end_to_end/expect.h"

// How users log in: by name and password, on the page by a session, from a script by a token.

using namespace rig;

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

constexpr char kSession[] = "/recorder/1/session";
const std::string kCamCap = std::string(kApi) + "CamCap?vendor=User";

int StatusOf(const TestRecorder& recorder, const Headers& headers) {
  return recorder.Ask("GET", kCamCap, headers).status;
}

Headers Bearer(const std::string& token) { return {{"Authorization", "Bearer " + token}}; }
Headers Cookie(const std::string& secret) { return {{"Cookie", "other=1; session=" + secret}}; }

/// What the answer sets the cookie of the session to.
std::string SecretIn(const Answer& answer) {
  const std::string line = HeaderOf(answer.head, "Set-Cookie");
  return line.substr(line.find('=') + 1, line.find(';') - line.find('=') - 1);
}

Answer LogIn(const TestRecorder& recorder, const std::string& user, const std::string& password) {
  Json::Value params;
  params["user"] = user;
  params["password"] = password;
  return recorder.Send("POST", kSession, {}, ToText(params));
}

void AddUser(const TestRecorder& recorder, const std::string& name, const std::string& password) {
  const Finished added = recorder.Control({"user", "add", name}, password + "\n");
  ASSERT_EQ(added.status, 0) << added.output;
}

/// Without the end of the line.
std::string Printed(const TestRecorder& recorder, const std::string& arguments) {
  const Finished finished = recorder.Control(Words(arguments));
  EXPECT_EQ(finished.status, 0) << finished.output;
  return finished.output.substr(0, finished.output.find('\n'));
}

std::string LinkCode(const TestRecorder& recorder, const std::string& arguments) {
  const std::string link = Printed(recorder, arguments);
  EXPECT_THAT(link, HasSubstr("http://127.0.0.1:" + std::to_string(recorder.Port()) + "/#link="));
  return link.substr(link.find('=') + 1);
}

}  // namespace

TEST(Logins, AreAskedFor) {
  const TestRecorder recorder;
  for (const Headers& headers : {Headers{}, Bearer("x"), Cookie("x"), Headers{{"Authorization", "Basic x"}}}) {
    const Answer answer = recorder.Send("GET", kCamCap, headers);
    EXPECT_EQ(answer.status, 401);
    EXPECT_THAT(HeaderOf(answer.head, "WWW-Authenticate"), AllOf(HasSubstr("Basic"), HasSubstr("Bearer")));
    Headers ofPage = headers;
    ofPage.emplace("Sec-Fetch-Site", "same-origin");
    const Answer toPage = recorder.Send("GET", kCamCap, ofPage);
    EXPECT_EQ(toPage.status, 401);
    EXPECT_THAT(HeaderOf(toPage.head, "WWW-Authenticate"), AllOf(Not(HasSubstr("Basic")), HasSubstr("Bearer")))
        << "a browser would ask in a box of its own";
  }
  AddUser(recorder, "second", "another login");
  const Headers second = LoginOf("second", "another login");
  EXPECT_EQ(StatusOf(recorder, second), 200);
  EXPECT_EQ(recorder.Control({"user", "remove", "second"}).status, 0);
  EXPECT_EQ(StatusOf(recorder, second), 401) << "not remembered any longer";
}

TEST(Logins, PauseAfterAWrongPasswordButNotForSessionsAndTokens) {
  const TestRecorder recorder;
  AddUser(recorder, "hall", "hall's login");
  const Headers session = Cookie(SecretIn(LogIn(recorder, "hall", "hall's login")));
  const Headers token = Bearer(Printed(recorder, "token add backup --user hall"));
  Answer paused = LogIn(recorder, "hall", "wrong");
  EXPECT_EQ(paused.status, 401);
  // However slow this machine is, a pause that doubles is soon longer than the way here.
  for (int guess = 0; guess < 8 && paused.status == 401; ++guess) paused = LogIn(recorder, "guest", "hall's login");
  EXPECT_EQ(paused.status, 429) << "whoever guesses from there";
  EXPECT_NE(HeaderOf(paused.head, "Retry-After"), "");
  EXPECT_EQ(StatusOf(recorder, session), 200);
  EXPECT_EQ(StatusOf(recorder, token), 200);
  EXPECT_EQ(StatusOf(recorder, LoginOf("hall", "hall's login")), 200) << "remembered";
  EXPECT_THAT(recorder.Log(), HasSubstr("Login of \"hall\" from 127.0.0.1 failed."));
}

TEST(Logins, AreLoggedWithTheAddressThatAKnownProxyNames) {
  const std::array<const char*, 3> kRows[] = {{"127.0.0.1", "203.0.113.9", "203.0.113.9"},
                                              {"127.0.0.1", "::ffff:203.0.113.9", "203.0.113.9"},
                                              {"192.0.2.1", "203.0.113.9", "127.0.0.1"}};
  for (const auto& [proxy, forwarded, address] : kRows) {
    const TestRecorder recorder({.proxies = {proxy}});
    EXPECT_EQ(StatusOf(recorder, {{"X-Forwarded-For", forwarded}, *LoginOf("x", "wrong").begin()}), 401);
    EXPECT_THAT(recorder.Log(), HasSubstr(std::string("from ") + address + " failed."));
  }
}

TEST(Sessions, EndWhenTheirUserOrAnAdminWishes) {
  const TestRecorder recorder;
  AddUser(recorder, "hall", "hall's login");
  const auto logIn = [&] { return Cookie(SecretIn(LogIn(recorder, "hall", "hall's login"))); };
  const Answer answer = LogIn(recorder, "hall", "hall's login");
  EXPECT_THAT(HeaderOf(answer.head, "Set-Cookie"), HasSubstr("; Path=/; HttpOnly; SameSite=Strict"));
  const Headers first = Cookie(SecretIn(answer));
  const Headers second = logIn();
  EXPECT_EQ(StatusOf(recorder, first), 200);
  EXPECT_EQ(recorder.Send("DELETE", kSession, first).status, 200);
  EXPECT_EQ(StatusOf(recorder, first), 401);
  EXPECT_EQ(StatusOf(recorder, second), 200);

  EXPECT_THAT(Printed(recorder, "session list"), HasSubstr("\thall\t127.0.0.1\t"));
  EXPECT_EQ(Printed(recorder, "session end --user hall"), "ended 1 sessions");
  EXPECT_EQ(StatusOf(recorder, second), 401);

  const Headers third = logIn();
  AddUser(recorder, "hall", "new login");
  EXPECT_EQ(StatusOf(recorder, third), 401) << "the password is another one";
}

TEST(Sessions, BeginByALinkOnce) {
  const TestRecorder recorder;
  const std::string code = R"({"link": ")" + LinkCode(recorder, "link --user tester") + '"';
  const std::string link = code + '}';
  EXPECT_EQ(recorder.Send("POST", kSession, {}, code + R"(, "stay": "yes"})").status, 400) << "the link stays good";
  const Answer answer = recorder.Send("POST", kSession, {}, link);
  EXPECT_EQ(answer.json["data"]["user"], "tester");
  EXPECT_EQ(StatusOf(recorder, Cookie(SecretIn(answer))), 200);
  EXPECT_EQ(recorder.Send("POST", kSession, {}, link).status, 401);
}

TEST(Tokens, MakeNoTokensAndNoLogins) {
  const TestRecorder recorder;
  AddUser(recorder, "hall", "hall's password");
  const auto make = [&](const Headers& login, const char* params) {
    return recorder.Send("POST", "/recorder/1/tokens", login, params);
  };
  const Answer first = make(recorder.Login(), R"({"name": "first"})");
  EXPECT_EQ(first.status, 200);
  const Headers token = Bearer(first.json["data"]["token"].asString());
  EXPECT_EQ(make(token, R"({"name": "second"})").status, 403);
  const char* params = R"({"name": "other", "password": "any password"})";
  EXPECT_EQ(recorder.Send("POST", "/recorder/1/users", token, params).status, 403);
  EXPECT_EQ(recorder.Send("PATCH", "/recorder/1/users/hall", token, params).status, 403);
  EXPECT_EQ(recorder.Send("PATCH", "/recorder/1/users/hall", recorder.Login(), params).status, 200);
}

TEST(FirstUser, IsMadeByWhoeverHasTheLink) {
  const TestRecorder recorder;
  std::filesystem::remove(recorder.StateFolder() / "users");
  EXPECT_TRUE(recorder.Send("GET", kSession, {}).json["error"]["firstUser"].asBool());
  Json::Value params;
  params["link"] = LinkCode(recorder, "link");
  EXPECT_TRUE(recorder.Send("POST", kSession, {}, ToText(params)).json["error"]["firstUser"].asBool());
  params["name"] = "boss";
  params["password"] = "boss's login";
  EXPECT_EQ(recorder.Send("POST", "/recorder/1/users", {}, ToText(params)).status, 200);
  EXPECT_EQ(Printed(recorder, "user list"), "boss\tadmin");
  params["name"] = "second";
  EXPECT_EQ(recorder.Send("POST", "/recorder/1/users", {}, ToText(params)).status, 401) << "there is a user now";
}

TEST(FirstUser, IsOneHoweverManyAskAtOnceAndCostsTheMemoryOfOneHash) {
  const TestRecorder recorder({.hashMemoryMiB = 64});
  std::filesystem::remove(recorder.StateFolder() / "users");
  Json::Value params;
  params["link"] = LinkCode(recorder, "link");
  params["password"] = "boss's login";
  const auto ask = [&](int number) {
    Json::Value own = params;
    own["name"] = std::string(1, "abcdefghijklmnop"[number]);
    return recorder.Send("POST", "/recorder/1/users", {}, ToText(own)).status;
  };
  EXPECT_EQ(CountAtOnce(16, 200, ask), 1);
  EXPECT_EQ(Words(recorder.Control({"user", "list"}).output).size(), 2U) << "a name and a role";
  for (const ProcessInfo& login : Descendants(getpid(), "recorder-login")) EXPECT_LT(PeakKiB(login.id), 3 * 64 * 1024);
}

TEST(Users, ChangeTheirOwnPasswordAndStayLoggedIn) {
  const TestRecorder recorder;
  AddUser(recorder, "hall", "hall's login");
  Headers session = Cookie(SecretIn(LogIn(recorder, "hall", "hall's login")));
  const auto change = [&](const char* name, const char* params) {
    return recorder.Send("PATCH", std::string("/recorder/1/users/") + name, session, params);
  };
  EXPECT_EQ(change("hall", "{}").status, 400);
  EXPECT_EQ(change("hall", R"({"role": "admin"})").status, 403);
  EXPECT_EQ(change("tester", R"({"password": "mine"})").status, 403);
  const Answer changed = change("hall", R"({"password": "new login", "oldPassword": "hall's login"})");
  EXPECT_EQ(changed.status, 200) << changed.body;
  EXPECT_EQ(StatusOf(recorder, session), 401);
  session = Cookie(SecretIn(changed));
  EXPECT_EQ(StatusOf(recorder, session), 200);
  EXPECT_EQ(StatusOf(recorder, LoginOf("hall", "new login")), 200);
  EXPECT_EQ(change("hall", R"({"password": "x", "oldPassword": "wrong"})").status, 403);
}

TEST(Users, OfAnEarlierVersionLogInAndGetANewHash) {
  const TestRecorder recorder;
  const std::filesystem::path file = recorder.StateFolder() / "users";
  std::ofstream(file) << "old:$2y$05$abcdefghijklmnopqrstuu4h2R.N3/mVBA7Xh7aLzKSJDAsK61n52\n";
  const Headers session = Cookie(SecretIn(LogIn(recorder, "old", "let me in")));
  EXPECT_THAT(ReadText(file), AllOf(testing::StartsWith("old:$argon2id$"), testing::EndsWith(":admin\n")));
  EXPECT_EQ(StatusOf(recorder, session), 200);
  EXPECT_EQ(StatusOf(recorder, LoginOf("old", "let me in")), 200);
}

TEST(Workers, GetAUsersNameAndNeverHisPassword) {
  const TestRecorder recorder({.serveArguments = {"--worker", ECHO_RESPONDER}});
  const std::string camCap = std::string(kTrusted) + "CamCap";
  for (const std::string& path : {std::string(kApi) + "CamCap", std::string("/recorder/1/cameras"), camCap}) {
    Headers headers = recorder.Login();
    headers.emplace("Cookie", "timestamp=1");
    headers.emplace("Remote-User", "nobody");
    if (path == camCap) recorder.Trust({"north"});
    const Reply told = recorder.Ask("POST", path, headers, "{}");
    EXPECT_EQ(told.status, 200);
    for (const char* line : {"\nREMOTE_USER=tester\n", "\nREMOTE_ROLE=admin\n"}) {
      EXPECT_EQ(path != camCap, told.body.find(line) != std::string::npos) << told.body;
    }
    EXPECT_THAT(told.body, Not(HasSubstr("AUTHORIZATION")));
  }
  const std::string password = recorder.Login().at("Authorization");
  for (const std::string& path : {std::string(kApi) + "CamCap", std::string("/recorder/1/cameras"), camCap,
                                  std::string("/foo"), std::string("/API/a/1/CamCap"), std::string("/x/y/1/CamCap")}) {
    for (const std::string& header : {password, "Bearer z, " + password, "Bearer z , " + password, " " + password}) {
      const Headers headers = {{"Authorization", header}, {"Cookie", "timestamp=1; session=x"}};
      EXPECT_THAT(recorder.Ask("POST", path, headers, "{}").body, Not(HasSubstr("AUTHORIZATION"))) << path << header;
    }
  }
  const std::filesystem::path users = recorder.StateFolder() / "users";
  const std::string line = ReadText(users);
  std::ofstream(users, std::ios::app) << " " << line.substr(line.find(':'));
  EXPECT_EQ(StatusOf(recorder, LoginOf(" ", "login of the tester")), 401) << "no name to hand on instead";
  EXPECT_THAT(recorder.Ask("POST", std::string(kApi) + "CamCap", Bearer("z"), "{}").body,
              HasSubstr("\nHTTP_AUTHORIZATION=Bearer z\n"));
}
