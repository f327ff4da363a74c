#include <gtest/gtest.h>

#include "recorder/device/asked/onvif/discovery_answers.h"
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

void ExpectCamera(const std::string& match, int port, const std::string& name = "", const std::string& hardware = "") {
  const std::vector<FoundCamera> wanted = {{kSender, port, name, hardware, "urn:uuid:camera"}};
  EXPECT_EQ(ReadProbeMatches(Answer(match), kMessageId, kSender), wanted) << match;
}

TEST(DiscoveryTest, AMatchIsOneCamera) {
  ExpectCamera(kTypes + "<XAddrs>http://10.0.0.1/x http://192.0.2.7:8000/x</XAddrs>", 8000);
  ExpectCamera(kTypes + "<XAddrs>http://10.0.0.1:81/onvif</XAddrs>", 81);
  ExpectCamera(kTypes + "<XAddrs>https://[fe80::1]/onvif</XAddrs>", 443);
  ExpectCamera(kTypes, 80);
  ExpectCamera(kTypes + "<XAddrs>http://192.0.2.7:99999/ http://:x ftp://a</XAddrs>", 80);
  ExpectCamera(kScope + "name/Yard%20%22A%22 onvif://www.onvif.org/hardware/P-1</Scopes>", 80, "Yard \"A\"", "P-1");
  ExpectCamera(kTypes + kScope + "name/a%1b%5b2J%0Ab%C2%9Bc%%zz</Scopes>", 80, R"(a\x1b[2J\nb\xc2\x9bc%%zz)");
  ExpectCamera(kTypes + kScope + "name/%ff%fe</Scopes>", 80);
  const std::string longest(127, 'a');
  ExpectCamera(kTypes + kScope + "name/" + longest + "%C3%A4</Scopes>", 80, longest);
}

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
