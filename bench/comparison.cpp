#include "bench/comparison.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "rig/callers.h"

namespace bench {

using rig::Median;
using rig::NumberText;

namespace {

std::string GoalText(Goal goal) {
  const std::string more = goal.orMore > 0 ? ", or " + NumberText(goal.orMore, 0) + " ms more" : "";
  return (goal.kind == Goal::Kind::kAtMost ? "at most " : "at least ") + NumberText(goal.bound, 2) + more;
}

std::string Verdict(double ratio, Goal::Kind kind, double bound) {
  const bool isMet = kind == Goal::Kind::kAtMost ? ratio <= bound : ratio >= bound;
  return isMet ? "met" : "missed by " + NumberText(100 * std::abs(ratio / bound - 1)) + " %";
}

/// `bound` is the goal's for this row.
void AddRow(rig::Report& table, const std::string& name, const Side& ours, const Side& other, double ratio, Goal goal,
            double bound) {
  table.Row({name, ours.what, ours.figure, other.what, other.figure, NumberText(ratio, ratio < 0.1 ? 3 : 2),
             GoalText(goal), Verdict(ratio, goal.kind, bound)});
}

}  // namespace

Comparison Compare(const Way& ours, const Way& other, int pairs) {
  std::vector<double> ourFigures;
  std::vector<double> otherFigures;
  std::vector<double> ratios;
  for (int i = 0; i < pairs; ++i) {
    ourFigures.push_back(ours());
    otherFigures.push_back(other());
    ratios.push_back(ourFigures.back() / otherFigures.back());
  }
  return {Median(ourFigures), Median(otherFigures), Median(ratios)};
}

std::string TimeText(double milliseconds) {
  constexpr double kThousand = 1000;
  if (milliseconds < 1) return NumberText(milliseconds * kThousand) + " µs";
  if (milliseconds < kThousand) return NumberText(milliseconds) + " ms";
  return NumberText(milliseconds / kThousand, 2) + " s";
}

void AddHead(rig::Report& table) {
  table.Row({"Row", "Ours", "Median", "Against", "Median", "Ratio", "Goal", "Result"});
  table.Row({"---", "---", "---:", "---", "---:", "---:", "---", "---"});
}

void AddRow(rig::Report& table, const std::string& name, const Side& ours, const Side& other, double ratio, Goal goal) {
  AddRow(table, name, ours, other, ratio, goal, goal.bound);
}

void AddRow(rig::Report& table, const std::string& name, const std::string& ours, const std::string& other,
            const Comparison& times, Goal goal) {
  const double bound = goal.orMore > 0 ? std::max(goal.bound, 1 + goal.orMore / times.other) : goal.bound;
  AddRow(table, name, {ours, TimeText(times.ours)}, {other, TimeText(times.other)}, times.ratio, goal, bound);
}

}  // namespace bench
