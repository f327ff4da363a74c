#include "bench/table.h"

#include <cmath>
#include <iostream>

namespace bench {

namespace {

std::string GoalText(Goal goal) {
  return (goal.kind == Goal::Kind::kAtMost ? "at most " : "at least ") + NumberText(goal.bound, 2);
}

std::string Verdict(double ratio, Goal goal) {
  const bool isMet = goal.kind == Goal::Kind::kAtMost ? ratio <= goal.bound : ratio >= goal.bound;
  return isMet ? "met" : "missed by " + NumberText(100 * std::abs(ratio / goal.bound - 1), 1) + " %";
}

std::string RatioText(double ratio) { return NumberText(ratio, ratio < 0.1 ? 3 : 2); }

}  // namespace

void Table::AddLine(const std::vector<std::string>& cells) {
  std::string line = "|";
  for (const std::string& cell : cells) line += " " + cell + " |";
  std::cerr << line << std::endl;
  text_ += line + "\n";
}

void Table::Add(const std::string& name, const Side& ours, const Side& other, double ratio, Goal goal) {
  if (!hasHead_) {
    AddLine({"Row", "Ours", "Median", "Against", "Median", "Ratio", "Goal", "Result"});
    AddLine({"---", "---", "---:", "---", "---:", "---:", "---", "---"});
    hasHead_ = true;
  }
  AddLine(
      {name, ours.what, ours.figure, other.what, other.figure, RatioText(ratio), GoalText(goal), Verdict(ratio, goal)});
}

void Table::Add(const std::string& name, const std::string& ours, const std::string& other, const Comparison& times,
                Goal goal) {
  Add(name, {ours, TimeText(times.ours)}, {other, TimeText(times.other)}, times.ratio, goal);
}

void Table::AddWrong(const std::string& name, const std::string& mistake) {
  isWrong_ = true;
  AddLine({name, "WRONG ANSWER", "", mistake, "", "", "", ""});
}

}  // namespace bench
