#include "recorder/device/find/discover.h"

#include <gtest/gtest.h>

#include "recorder/device/find/knock_range.h"
#include "recorder/device/find/mdns.h"
#include "tests/recorder/rows.h"

namespace recorder::find {
namespace {

using namespace std::string_view_literals;

constexpr std::uint16_t kId = 0x1234;
// To the question for _axis-video._tcp.local: the instance "yard", its port 80 and its serial number.
constexpr std::string_view kAnswer =
    "\x12\x34\x84\0\0\x01\0\x01\0\0\0\x02\x0b_axis-video\x04_tcp\x05local\0\0\x0c\0\x01"
    "\xc0\x0c\0\x0c\0\x01\0\0\0\x0a\0\x07\x04yard\xc0\x0c"
    "\xc0\x34\0\x21\0\x01\0\0\0\x0a\0\x08\0\0\0\0\0\x50\xc0\x1d"
    "\xc0\x34\0\x10\0\x01\0\0\0\x0a\0\x10\x0fmacaddress=0A1B"sv;

TEST(MdnsTest, AnAnswerIsOneDevice) {
  const HeardDevice wanted{HeardBy::kMdns, "192.0.2.7", 80, "yard", "Axis", "", "", "0A1B"};
  EXPECT_EQ(ReadMdnsAnswer(kAnswer, kId, "192.0.2.7"), wanted);
}

TEST(MdnsTest, OtherAnswersAreIgnored) {
  const std::string right(kAnswer);
  EXPECT_FALSE(ReadMdnsAnswer(right, kId + 1, "")) << "to another question";
  EXPECT_FALSE(ReadMdnsAnswer(MdnsQuestion(kId, MdnsServices().front()), kId, "")) << "a question";
  EXPECT_FALSE(ReadMdnsAnswer(Replaced(right, "axis", "else"), kId, "")) << "of another service";
  EXPECT_FALSE(ReadMdnsAnswer(Replaced(right, "yard\xc0\x0c", "yard\xc0\x2f"), kId, "")) << "a name without end";
  for (std::size_t size = 0; size < right.size(); ++size) EXPECT_FALSE(ReadMdnsAnswer(right.substr(0, size), kId, ""));
}

HeardDevice Heard(HeardBy by, const std::string& address, const std::string& endpoint = "",
                  const std::string& serial = "") {
  return {.by = by, .address = address, .port = 80, .endpoint = endpoint, .serial = serial};
}

TEST(FoundDevicesTest, ADeviceIsOneEntryHoweverItIsHeard) {
  FoundDevices devices;
  const auto number = [&](const HeardDevice& heard) {
    const FoundDevice* device = devices.Take(heard);
    return device == nullptr ? 0 : device->number;
  };
  EXPECT_EQ(number(Heard(HeardBy::kOnvif, "192.0.2.7", "a")), 1);
  EXPECT_EQ(number(Heard(HeardBy::kOnvif, "192.0.2.7", "a")), 0) << "nothing new";
  EXPECT_EQ(number(Heard(HeardBy::kMdns, "192.0.2.7", "", "0A1B")), 1) << "by its address";
  EXPECT_EQ(number(Heard(HeardBy::kOnvif, "192.0.2.8", "a")), 1) << "another address of the same";
  EXPECT_EQ(number(Heard(HeardBy::kMdns, "192.0.2.9", "", "0A1B")), 1) << "by its serial number";
  EXPECT_EQ(number(Heard(HeardBy::kOnvif, "192.0.2.7", "b")), 2) << "another one behind the same address";
}

TEST(FoundDevicesTest, OneSenderDoesNotFillTheList) {
  FoundDevices devices;
  for (int i = 0; i < 20; ++i) devices.Take(Heard(HeardBy::kOnvif, "192.0.2.7", std::to_string(i)));
  EXPECT_EQ(devices.Take(Heard(HeardBy::kOnvif, "192.0.2.8", "a"))->number, 17);
}

struct StoredCase {
  const char* name;
  const char* vendor;
  const char* host;
  CameraIdentity identity;
  DeviceState state;
};
class StoredDeviceTest : public testing::TestWithParam<StoredCase> {};
TEST_P(StoredDeviceTest, IsKnownAgain) {
  FoundDevices devices;
  const FoundDevice& device = *devices.Take(Heard(HeardBy::kOnvif, "192.0.2.7", "a", "0A1B"));
  CameraRecord record;
  record.vendor = GetParam().vendor;
  record.host = GetParam().host;
  record.port = GetParam().vendor == std::string("ONVIF") ? 8080 : 80;
  const StoredMatch match = FindStored(device, {{record, GetParam().identity}});
  EXPECT_EQ(match.state, GetParam().state);
  EXPECT_EQ(match.cameras.size(), GetParam().state == DeviceState::kNew ? 0U : 1U);
}
const StoredCase kStoredCases[] = {
    {"ByItsAddress", "Acme", "192.0.2.7", {}, DeviceState::kKnown},
    {"NotByAnother", "Acme", "192.0.2.8", {}, DeviceState::kNew},
    {"NotByAnotherPortOfOnvif", "ONVIF", "192.0.2.7", {}, DeviceState::kNew},
    {"ByItsEndpointWhereItIs", "ONVIF", "192.0.2.7", {"a", ""}, DeviceState::kKnown},
    {"ByItsEndpointElsewhere", "ONVIF", "192.0.2.8", {"a", ""}, DeviceState::kMoved},
    {"ByItsSerialNumberElsewhere", "ONVIF", "192.0.2.8", {"", "0A1B"}, DeviceState::kMoved},
    {"ByItsEndpointUnderAName", "ONVIF", "cam.example", {"a", ""}, DeviceState::kKnown},
    {"NotAsTheOneBeforeIt", "Acme", "192.0.2.7", {"b", ""}, DeviceState::kNew},
};
INSTANTIATE_TEST_SUITE_P(Row, StoredDeviceTest, testing::ValuesIn(kStoredCases), kByName);

TEST(KnockRangeTest, IsSmallAndAllowed) {
  const std::vector<Ipv4Number> addresses = AddressesToKnockAt("10.0.2.77/22");
  ASSERT_EQ(addresses.size(), kMostKnockedAddresses);
  EXPECT_EQ(addresses.front(), 0x0A000000U);
  const std::vector<Ipv4Number> one = {0xC0000207U};
  EXPECT_EQ(AddressesToKnockAt("192.0.2.7"), one);
  for (const char* refused : {"192.0.2.0/21", "0.0.0.0/0", "2001:db8::/120", "192.0.2.0/x", "camera", "224.0.0.0/24"}) {
    EXPECT_THROW(AddressesToKnockAt(refused), DiscoverRefused) << refused;
  }
}

}  // namespace
}  // namespace recorder::find
