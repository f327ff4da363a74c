#include "recorder/net/rtsp/rtp_order.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/recorder/rows.h"

namespace recorder {
namespace {

struct OrderCase {
  const char* name;
  std::vector<std::pair<int, int>> packets;  ///< sequence number, and the millisecond at which it comes
  std::string order;
};

/// The first packet, then these all at once.
std::vector<std::pair<int, int>> InARow(int first, int last) {
  std::vector<std::pair<int, int>> packets = {{1, 0}};
  for (int sequence = first; sequence <= last; ++sequence) packets.emplace_back(sequence, 1);
  return packets;
}

std::string Numbers(int first, int last) {
  std::string numbers;
  for (int number = first; number <= last; ++number) numbers += std::to_string(number) + ' ';
  return numbers;
}

const OrderCase kOrderCases[] = {
    {"Exchanged", {{1, 0}, {3, 1}, {2, 2}, {4, 3}}, "1 2 3 4 "},
    {"Wraps", {{65534, 0}, {0, 1}, {65535, 2}, {1, 3}}, "65534 65535 0 1 "},
    {"Twice", {{1, 0}, {3, 1}, {3, 2}, {2, 3}, {2, 4}, {1, 5}}, "1 2 3 "},
    {"LostAndWaitedFor", {{1, 0}, {3, 1}, {5, 2}, {6, 51}, {7, 101}}, "1 3 5 6 7 "},
    {"StillWaitedFor", {{1, 0}, {3, 1}, {4, 50}}, "1 "},
    {"TooLate", {{1, 0}, {3, 1}, {4, 51}, {2, 52}, {5, 53}}, "1 3 4 5 "},
    {"AsManyAsMayWait", InARow(3, 66), "1 "},
    {"OneMoreThanMayWait", InARow(3, 67), "1 " + Numbers(3, 67)},
    {"CountsAnew", {{5000, 0}, {5002, 1}, {1, 2}, {2, 3}}, "5000 1 2 "},
};

class OrderTest : public testing::TestWithParam<OrderCase> {};

TEST_P(OrderTest, IsThatInWhichTheCameraSent) {
  RtpOrder order;
  std::string taken;
  const auto& packets = GetParam().packets;
  for (std::size_t i = 0; i < packets.size(); ++i) {
    const auto& [sequence, millisecond] = packets[i];
    const Clock::time_point now{std::chrono::milliseconds(millisecond)};
    std::vector<std::uint8_t> packet(12, 0x80);
    packet[2] = static_cast<std::uint8_t>(sequence >> 8);
    packet[3] = static_cast<std::uint8_t>(sequence & 0xff);
    order.Add(packet, now);
    const bool isMoreToCome = i + 1 < packets.size() && packets[i + 1].second == millisecond;
    if (isMoreToCome) continue;
    while (const auto next = order.Take(now)) taken += std::to_string(next->at(2) << 8 | next->at(3)) + ' ';
  }
  EXPECT_EQ(taken, GetParam().order);
}

INSTANTIATE_TEST_SUITE_P(Rtp, OrderTest, testing::ValuesIn(kOrderCases), kByName);

}  // namespace
}  // namespace recorder
