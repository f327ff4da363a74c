#include <gtest/gtest.h>

#include "recorder/access/grant_list.h"
#include "recorder/access/granting.h"
#include "recorder/access/password_hash.h"
#include "recorder/access/users.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/files.h"
#include "recorder/utility/secrets.h"
#include "rig/temp_folder.h"

namespace recorder {
namespace {

using Kind = Grant::Kind;

constexpr HashCost kCheap{1, 1};
std::string CheapHash(const std::string& password) { return HashPassword(password, kCheap); }

class AccessTest : public testing::Test {
 protected:
  void SetUp() override {
    PrepareSodium();
    AddUser(State(), "admin", "the secret", Role::kAdmin, CheapHash);
    AddUser(State(), "hall", "the secret", Role::kUser, CheapHash);
  }
  const std::filesystem::path& State() const { return folder_.Path(); }
  bool IsIn(Kind kind, const NewGrant& made) { return list_.Find(kind, made.secret).has_value(); }
  /// Puts a line with these times into the file in place of all others.
  void WriteGrant(const NewGrant& made, std::int64_t created, std::int64_t lastUsed, std::int64_t until) {
    Grant grant = made.grant;
    grant.created = created;
    grant.lastUsed = lastUsed;
    grant.until = until;
    ReplaceFile(GrantsFile(State()), ToText(std::vector{grant}));
  }

  rig::TempFolder folder_;
  GrantList list_{folder_.Path()};
};

TEST_F(AccessTest, AnAdminIsAlwaysLeft) {
  EXPECT_THROW(RemoveUser(State(), "admin"), AccessError);
  EXPECT_THROW(ChangeUser(State(), "admin", {{}, Role::kUser}, CheapHash), AccessError);
  ChangeUser(State(), "hall", {{}, Role::kAdmin}, CheapHash);
  RemoveUser(State(), "admin");
  EXPECT_EQ(ReadUsers(State()).size(), 1U);
}

TEST_F(AccessTest, NamesThatTheFilesCannotHoldAreRefused) {
  for (const std::string name : {"", "#x", " ", "a ", "a:b", "a\tb", "\xff", "hall"}) {
    EXPECT_THROW(AddUser(State(), name, "the secret", Role::kUser, CheapHash), AccessError) << name;
  }
  for (const std::string name : {"", "a\nb"}) EXPECT_THROW(AddToken(State(), "hall", name, 0), AccessError) << name;
  AddToken(State(), "hall", "backup", 0);
  EXPECT_THROW(AddToken(State(), "admin", "backup", 0), AccessError);
  EXPECT_THROW(AddToken(State(), "admin", "over", 1), AccessError);
}

TEST_F(AccessTest, ShortPasswordsAreRefused) {
  for (const std::string password : {"", "short", "\u00e4\u00e4\u00e4\u00e4"}) {
    EXPECT_THROW(AddUser(State(), "new", password, Role::kUser, CheapHash), AccessError) << password;
    EXPECT_THROW(ChangeUser(State(), "hall", {password, {}}, CheapHash), AccessError) << password;
  }
}

TEST_F(AccessTest, ChangedUsersLoseTheirSessionsAndRemovedOnesAll) {
  const NewGrant session = StartSession(State(), "hall", "192.0.2.1", false);
  const NewGrant link = AddLink(State(), "hall");
  const NewGrant token = AddToken(State(), "hall", "backup", 0);
  const NewGrant others = StartSession(State(), "admin", "192.0.2.1", true);
  EXPECT_TRUE(IsIn(Kind::kSession, session) && IsIn(Kind::kLink, link) && IsIn(Kind::kToken, token));
  EXPECT_FALSE(IsIn(Kind::kSession, token)) << "a token is no session";
  ChangeUser(State(), "hall", {"new secret", Role::kAdmin}, CheapHash);
  EXPECT_FALSE(IsIn(Kind::kSession, session) || IsIn(Kind::kLink, link));
  EXPECT_EQ(list_.Find(Kind::kToken, token.secret)->role, Role::kAdmin) << "a token has its user's role";
  RemoveUser(State(), "hall");
  EXPECT_FALSE(IsIn(Kind::kToken, token));
  EXPECT_TRUE(IsIn(Kind::kSession, others));
  EXPECT_EQ(ReadFile(GrantsFile(State())).find(others.secret), std::string::npos);
}

TEST_F(AccessTest, SessionsEndAfterHalfADayWithoutUseOrAMonth) {
  constexpr std::int64_t kHour = 3600;
  constexpr std::int64_t kDay = 24 * kHour;
  const struct {
    const char* name;
    bool isToStay;
    std::int64_t age, unused, left;  ///< seconds: since it began and was used last, and until it ends as it is now
    std::int64_t leftAfterUse;
  } kCases[] = {
      {"UsedLately", false, kHour, kHour / 4, 11 * kHour, 11 * kHour},
      {"UsedAgain", false, kHour, kHour, 11 * kHour, 12 * kHour},
      {"NearItsLongest", false, 30 * kDay - kHour, kHour, kHour / 2, kHour},
      {"Staying", true, kHour, kHour, 30 * kDay - kHour, 30 * kDay - kHour},
  };
  for (const auto& row : kCases) {
    const NewGrant made = StartSession(State(), "hall", "192.0.2.1", row.isToStay);
    const std::int64_t now = SecondsNow();
    WriteGrant(made, now - row.age, now - row.unused, now + row.left);
    NoteUse(State(), made.grant.id);
    EXPECT_NEAR(static_cast<double>(ReadGrants(State()).at(0).until - now), static_cast<double>(row.leftAfterUse), 5)
        << row.name;
    WriteGrant(made, now - row.age, now - row.unused, now);
    EXPECT_FALSE(IsIn(Kind::kSession, made)) << row.name;
  }
}

}  // namespace
}  // namespace recorder
