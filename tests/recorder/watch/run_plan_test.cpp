#include "recorder/watch/run_plan.h"

#include <gtest/gtest.h>

namespace recorder {
namespace {

TEST(RunPlan, NeverHasTwoRowsOfOneHostAtHandAndKeepsSilentOnesTogether) {
  BusyHosts busyHosts;
  busyHosts.Take("a");
  busyHosts.Take("watched");
  RunPlan plan({{7, "watched"}, {1, "a"}, {2, "a"}, {3, "b"}, {8, "d"}, {4, "silent"}, {5, "c", true}, {6, "b"}},
               {"silent"}, busyHosts);
  using Rows = std::vector<int>;
  EXPECT_EQ(plan.Next(), Rows{5}) << "it needs a call of its own, and no knock";
  EXPECT_EQ(plan.NextKnocks().size(), 2U) << "at all that are free";
  EXPECT_FALSE(plan.CanGoOn()) << "more may come to those that share a call";
  busyHosts.GiveBack("a");
  EXPECT_EQ(plan.NextKnocks().front().number, 1);
  plan.EndKnocks({1, 3, 8}, {8});
  EXPECT_EQ(plan.Next(), (Rows{4, 8}));
  EXPECT_EQ(plan.Next(), (Rows{1, 3}));
  EXPECT_FALSE(plan.CanGoOn());
  plan.End({1, 3}, {3});
  EXPECT_EQ(plan.Next(), Rows{6}) << "its host has become silent";
  EXPECT_EQ(plan.Next(), Rows{2});
  plan.End({2, 4, 5, 8}, {});
  EXPECT_FALSE(plan.IsDone());
  busyHosts.GiveBack("watched");
  EXPECT_FALSE(plan.CanGoOn());
  EXPECT_EQ(plan.NextKnocks().front().number, 7);
  plan.EndKnocks({7}, {});
  EXPECT_EQ(plan.Next(), Rows{7});
  plan.End({6, 7}, {});
  EXPECT_TRUE(plan.IsDone());
}

}  // namespace
}  // namespace recorder
