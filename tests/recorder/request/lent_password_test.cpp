#include "recorder/request/lent_password.h"

#include <gtest/gtest.h>

#include "recorder/request/request_scope.h"
#include "recorder/utility/config.h"
#include "recorder/utility/limits.h"
#include "rig/temp_folder.h"
#include "tests/recorder/rows.h"

namespace recorder {
namespace {

/// Stored cameras, whose passwords are their names.
const CameraRecord kRecords[] = {
    {1, "one", "Acme", "X", "cam1", 80, "admin", "1", ""},
    {2, "two", "Acme", "X", "cam1", 80, "admin", "2", ""},
    {3, "three", "Acme", "X", "cam2", 80, "admin", "", ""},
    {4, "four", "Acme", "X", "cam2", 80, "guest", "", "", CAM_CONN_STATUS_DISABLED},
    {5, "five", "Acme", "X", "cam3", 80, "admin", "", ""},
    {6, "six", "Acme", "X", "cam3", 80, "admin", "1", ""},
    {7, "seven", "User", "", "cam3", 554, "admin", "", "/live"},
    {8, "eight", "ONVIF", "Generic", "cam8", 80, "admin", "1", ""},
    {9, "nine", "Acme", "X", "cam1", 80, "guest", "", ""},  // removed
};
/// Of the eighth.
const std::vector<CameraStream> kStreams = {{"main", "", "", "", 0, "", ""},
                                            {"sub", "", "User", "", 554, "2", "/sub"},
                                            {"third", "", "Acme", "X", 8080, "", ""}};

struct Question {
  const char* name;
  int camId;
  const char* channel;
  WantedCamera wanted;
  const char* password;  ///< or a part of what the log says
};

WantedCamera Acme(const std::string& host, const std::string& user = "admin") {
  return {"Acme", "X", host, 80, user, "", "1"};
}
WantedCamera AcmeY() { return {"Acme", "Y", "cam1", 80, "admin", "", "1"}; }
WantedCamera WithDefault(const std::string& channel) { return {"Acme", "X", "cam1", 80, "admin", "", channel}; }
WantedCamera User(const std::optional<std::string>& path) { return {"User", "", "cam3", 554, "admin", path, "1"}; }

WantedCamera Of8(const std::string& vendor, const std::string& model, int port, const std::string& path) {
  return {vendor, model, "cam8", port, "admin", path, "1"};
}
WantedCamera SubAt(const std::string& host, const std::string& user) {
  return {"User", "", host, 554, user, "/sub", ""};
}

const Question kQuestions[] = {
    {"ById", 1, "2", Acme("cam1"), "one"},
    {"ByIdInAnotherSpelling", 1, "", Acme("[CAM1.]"), "one"},
    {"WithItsPath", 7, "", User("/live"), "seven"},
    {"WhereNoPathIsUsed", 7, "", User(std::nullopt), "seven"},
    {"ByHost", 0, "", Acme("cam2"), "three"},
    {"ByChannel", 0, "2", Acme("cam1"), "two"},
    {"ByTheDefaultChannel", 0, "", WithDefault("2"), "two"},
    {"ByNoChannelThatAnyHas", 0, "3", Acme("cam1"), "cameras 1, 2 is not lent: the request names another channel"},
    {"AnotherModel", 1, "", AcmeY(), "camera 1 is not lent: the request names another vendor or model"},
    {"AnotherHost", 1, "", Acme("cam2"), "names another host"},
    {"AnotherPath", 7, "", User("/live?"), "names another source path"},
    {"SwitchedOff", 0, "", Acme("cam2", "guest"), "camera 4 is not lent: it is switched off"},
    {"TwoFit", 0, "1", Acme("cam3"), "cameras 5, 6 is not lent: they fit the request alike"},
    {"ByADefaultThatNobodyKnows", 0, "", WithDefault(""), "cameras 1, 2 is not lent: they fit the request alike"},
    {"TheOwnStreamBesideOthers", 8, "7", Of8("ONVIF", "Generic", 80, ""), "eight"},
    {"AFurtherStream", 8, "2", Of8("User", "", 554, "/sub"), "eight"},
    {"AFurtherStreamOfAnyChannel", 8, "7", Of8("Acme", "X", 8080, ""), "eight"},
    {"AFurtherStreamInAnotherChannel", 8, "1", Of8("User", "", 554, "/sub"), "names another channel"},
    {"AFurtherStreamAtTheOwnPort", 8, "2", Of8("User", "", 80, "/sub"), "names another port"},
    {"TheOwnStreamAtAFurtherPort", 8, "1", Of8("ONVIF", "Generic", 554, ""), "names another port"},
    {"AnotherPathAtAFurtherPort", 8, "2", Of8("User", "", 554, "/su"),
     "camera 8 is not lent: the request names another s"},
    {"AFurtherPathByAnotherModel", 8, "2", Of8("Acme", "Y", 554, "/sub"), "names another vendor or model"},
    {"AFurtherStreamOfAnotherUser", 8, "2", SubAt("cam8", "guest"), "names another user"},
    {"AFurtherStreamAtAnotherHost", 8, "2", SubAt("cam3", "admin"), "names another host"},
    {"AFurtherStreamOfAnotherCamera", 1, "2", SubAt("cam8", "admin"), "names another vendor or model"},
    {"AFurtherStreamWithoutItsId", 0, "2", SubAt("cam8", "admin"),
     "camera 7 is not lent: the request names another host"},
    {"Removed", 9, "", Acme("cam1", "guest"), "there is no camera 9"},
    {"RemovedByHost", 0, "", Acme("cam1", "guest"), "names another user"},
    {"NoSuchModel", 0, "", AcmeY(), "no camera of Acme Y is stored"},
};

class LendingTest : public testing::Test {
 protected:
  LendingTest() {
    Config config;
    config.stateFolder = folder_.Path();
    UseConfig(config);
    Records records{folder_.Path()};
    for (const CameraRecord& record : kRecords) {
      const auto& streams = record.id == 8 ? kStreams : std::vector<CameraStream>();
      EXPECT_EQ(records.Add(record, record.name, streams), record.id);
    }
    records.Remove(9);
  }
  static constexpr int kOwn = 80;
  static constexpr int kNamed = 554;
  LentPassword* Lend() {
    LentPassword* lent = scope_.FindLent(GetCamRealPass(3, "Acme", "X", ""));
    lent->LendFor({"Acme", "X", "cam2", kOwn, "admin", "", ""});
    return lent;
  }
  rig::TempFolder folder_;
  RequestScope scope_{std::chrono::milliseconds(1000)};
};

class LentPasswordTest : public LendingTest, public testing::WithParamInterface<Question> {};

TEST_P(LentPasswordTest, IsThatOfTheOneRecordThatFits) {
  const auto& [name, camId, channel, wanted, password] = GetParam();
  testing::internal::CaptureStderr();
  const std::string token = GetCamRealPass(camId, wanted.vendor, wanted.model, channel);
  LentPassword* lent = scope_.FindLent(token);
  for (int again = 0; again < 2; ++again) lent->LendFor(wanted);
  const std::string log = testing::internal::GetCapturedStderr();
  const std::optional<std::string> revealed = lent->Reveal();
  if (revealed) {
    EXPECT_EQ(*revealed, password);
    EXPECT_EQ(log, "");
  } else {
    EXPECT_NE(log.find(password), std::string::npos) << log;
    EXPECT_EQ(log.find('\n'), log.size() - 1) << "said once";
  }
  EXPECT_EQ(scope_.Refusal(wanted.host, wanted.port, wanted.user, token).has_value(), !revealed);
}

INSTANTIATE_TEST_SUITE_P(Lending, LentPasswordTest, testing::ValuesIn(kQuestions), kByName);

TEST_F(LendingTest, ANamedPortIsTheCameraWithTheCertificateOfItsOwnPort) {
  using enum LoginMethod;
  LentPassword* lent = Lend();
  EXPECT_EQ(lent->TrustCertificate(kNamed, "a"), Outcome::kOk);
  EXPECT_EQ(lent->TrustCertificate(kNamed, "b"), Outcome::kCertificateChanged);
  EXPECT_FALSE(lent->MayLogIn(kNamed, true, kBasic)) << "anybody on the way could have named it";
  EXPECT_FALSE(lent->MayLogIn(kNamed, false, kSha256)) << "it has done without TLS since";
  EXPECT_EQ(lent->TrustCertificate(kOwn, "a"), Outcome::kOk);
  for (LentPassword* later : {lent, Lend()}) EXPECT_TRUE(later->MayLogIn(kNamed, true, kBasic));
  lent->Worked(kOwn, kSha256);
  EXPECT_FALSE(lent->MayLogIn(kNamed, true, kBasic)) << "the camera knows Digest";

  for (int port = 1000; port < 1100; ++port) EXPECT_EQ(lent->TrustCertificate(port, "c"), Outcome::kOk);
  Records records{folder_.Path()};
  EXPECT_EQ(records.PinnedCertificates(3).size(), kMostPinnedPorts + 1);
  records.Change(3, {.forgetsCertificates = true});
  for (const int port : {1000, 1001, kOwn}) EXPECT_EQ(Lend()->TrustCertificate(port, "d"), Outcome::kOk);
}

}  // namespace
}  // namespace recorder
