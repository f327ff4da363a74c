#include "recorder/utility/address_policy.h"

#include <gtest/gtest.h>

#include "tests/recorder/rows.h"

namespace recorder {
namespace {

std::vector<AddressRange> Ranges(const std::vector<std::string>& texts) {
  std::vector<AddressRange> ranges;
  ranges.reserve(texts.size());
  for (const std::string& text : texts) ranges.push_back(ParseAddressRange(text).value());
  return ranges;
}

struct PolicyCase {
  const char* name;
  std::vector<std::string> allow = {};
  std::vector<std::string> deny = {};
  std::vector<std::string> open = {};
  std::vector<std::string> closed = {};
};

const PolicyCase kPolicyCases[] = {
    {.name = "WhereCamerasLive",
     .open = {"10.0.0.1", "172.16.0.1", "192.168.1.64", "100.64.0.1", "203.0.113.9", "128.0.0.1", "1.0.0.0",
              "168.63.129.17", "fd00::1", "fd00:ec3::1", "2001:db8::1", "::ffff:192.168.1.64", "64:ff9b::192.168.1.64",
              "2002:a00:1::1"}},
    {.name = "Loopback",
     .closed = {"127.0.0.1", "127.255.255.254", "::1", "::ffff:127.0.0.1", "::127.0.0.1", "::ffff:0:127.0.0.1",
                "64:ff9b::127.0.0.1", "64:ff9b:1::127.0.0.1", "2002:7f00:1::1"}},
    {.name = "LinkAndMetadata",
     .closed = {"169.254.0.1", "169.254.169.254", "::ffff:169.254.169.254", "64:ff9b::169.254.169.254",
                "2002:a9fe:a9fe::", "fe80::1", "febf::1", "fd00:ec2::254", "fd00:ec2:1::23", "100.100.100.200",
                "2001:0:1::2", "240.0.0.1"}},
    {.name = "NoHostWhateverIsAllowed",
     .allow = {"0.0.0.0/0", "::/0"},
     .open = {"127.0.0.1", "::1", "169.254.169.254", "fe80::1"},
     .closed = {"0.0.0.0", "0.1.2.3", "::", "::ffff:0.0.0.0", "224.0.0.1", "239.255.255.250", "255.255.255.255",
                "ff02::1", "::ffff:224.0.0.1", "64:ff9b::e000:1", "2002:e000:1::1", "2002::1"}},
    {.name = "AllowOpensThatAlone",
     .allow = {"127.0.0.0/8"},
     .open = {"127.0.0.1", "::ffff:127.9.9.9"},
     .closed = {"::1", "64:ff9b::127.0.0.1", "169.254.169.254"}},
    {.name = "ARangeIsOfOneFamily",
     .allow = {"::/0"},
     .open = {"::1", "fe80::1"},
     .closed = {"127.0.0.1", "169.254.169.254"}},
    {.name = "DenyWins",
     .allow = {"127.0.0.0/8", "::1"},
     .deny = {"10.1.0.0/17", "127.0.0.2", "fd00::/9"},
     .open = {"127.0.0.1", "::1", "10.1.128.0", "10.0.255.255", "fd80::"},
     .closed = {"127.0.0.2", "10.1.0.0", "10.1.127.255", "::ffff:10.1.0.1", "64:ff9b::10.1.0.1", "fd7f::1"}},
};

class AddressPolicyTest : public testing::TestWithParam<PolicyCase> {};

TEST_P(AddressPolicyTest, OpensAndCloses) {
  const AddressPolicy policy{Ranges(GetParam().allow), Ranges(GetParam().deny)};
  const auto allows = [&](const std::string& address) { return policy.Allows(Ranges({address})[0].start); };
  for (const std::string& address : GetParam().open) EXPECT_TRUE(allows(address)) << address;
  for (const std::string& address : GetParam().closed) EXPECT_FALSE(allows(address)) << address;
}

INSTANTIATE_TEST_SUITE_P(Policy, AddressPolicyTest, testing::ValuesIn(kPolicyCases), kByName);

TEST(AddressRangeTest, IsNoOtherText) {
  for (const char* text : {"", "/8", "10.0.0.0/", "10.0.0.0/33", "10.0.0.0/-1", "10.0.0.0/8 ", "10.0.0/8", "::1/129",
                           "fe80::1%lo", "localhost", "0x7f.0.0.1"}) {
    EXPECT_FALSE(ParseAddressRange(text)) << text;
  }
}

}  // namespace
}  // namespace recorder
