#include <gtest/gtest.h>

#include "recorder/device/onvif/discovery_answers.h"
#include "tests/recorder/rows.h"

namespace recorder::onvif {
namespace {

constexpr char kMessageId[] = "urn:uuid:1";
constexpr char kSender[] = "192.0.2.7";

std::string Answer(const std::string& match) {
  return R"(<E:Envelope xmlns:E="http://www.w3.org/2003/05/soap-envelope")"
         R"( xmlns:w="http://schemas.xmlsoap.org/ws/2004/08/addressing")"
         R"( xmlns="http://schemas.xmlsoap.org/ws/2005/04/discovery">)"
         "<E:Header><w:RelatesTo>urn:uuid:1</w:RelatesTo></E:Header><E:Body><ProbeMatches><ProbeMatch>"
         "<w:EndpointReference><w:Address>urn:uuid:camera</w:Address></w:EndpointReference>" +
         match + "</ProbeMatch></ProbeMatches></E:Body></E:Envelope>";
}

const std::string kTypes = "<Types>dn:NetworkVideoTransmitter tds:Device</Types>";
const std::string kScope = "<Scopes>onvif://www.onvif.org/";

struct MatchCase {
  const char* name;
  std::string match;
  FoundCamera camera;
};

FoundCamera At(int port, const std::string& name = "", const std::string& hardware = "") {
  return {kSender, port, name, hardware, "urn:uuid:camera"};
}

const MatchCase kMatchCases[] = {
    {"AddressOfSender", kTypes + "<XAddrs>http://10.0.0.1/x http://192.0.2.7:8000/x</XAddrs>", At(8000)},
    {"InnerAddress", kTypes + "<XAddrs>http://10.0.0.1:81/onvif</XAddrs>", At(81)},
    {"UsualPort", kTypes + "<XAddrs>https://[fe80::1]/onvif</XAddrs>", At(443)},
    {"NoAddress", kTypes, At(80)},
    {"NoPort", kTypes + "<XAddrs>http://192.0.2.7:99999/ http://:x ftp://a</XAddrs>", At(80)},
    {"TypeMissing", kScope + "name/Yard%20%22A%22 onvif://www.onvif.org/hardware/P-1</Scopes>",
     At(80, "Yard \"A\"", "P-1")},
    {"ControlsInName", kTypes + kScope + "name/a%1b%5b2J%0Ab%C2%9Bc%%zz</Scopes>",
     At(80, R"(a\x1b[2J\nb\xc2\x9bc%%zz)")},
    {"NameIsNoUtf8", kTypes + kScope + "name/%ff%fe</Scopes>", At(80)},
    {"NameIsLong", kTypes + kScope + "name/" + std::string(127, 'a') + "%C3%A4</Scopes>",
     At(80, std::string(127, 'a'))},
};

class MatchTest : public testing::TestWithParam<MatchCase> {};

TEST_P(MatchTest, IsOneCamera) {
  const auto cameras = ReadProbeMatches(Answer(GetParam().match), kMessageId, kSender);
  ASSERT_EQ(cameras.size(), 1U);
  EXPECT_EQ(cameras[0].name, GetParam().camera.name);
  EXPECT_EQ(cameras[0], GetParam().camera);
}

INSTANTIATE_TEST_SUITE_P(Discovery, MatchTest, testing::ValuesIn(kMatchCases), kByName);

TEST(DiscoveryTest, OtherAnswersAreIgnored) {
  const std::string right = Answer(kTypes);
  EXPECT_EQ(ReadProbeMatches(right, kMessageId, kSender).size(), 1U);
  EXPECT_TRUE(ReadProbeMatches(right, "urn:uuid:2", kSender).empty()) << "to another probe";
  EXPECT_TRUE(ReadProbeMatches(Answer("<Types>pub:Computer</Types>"), kMessageId, kSender).empty());
  EXPECT_TRUE(ReadProbeMatches(Replaced(right, "2005/04", "2009/01"), kMessageId, kSender).empty());
  EXPECT_TRUE(ReadProbeMatches(std::string("\0<<", 3), kMessageId, kSender).empty());
}

}  // namespace
}  // namespace recorder::onvif
