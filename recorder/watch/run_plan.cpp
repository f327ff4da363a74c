#include "recorder/watch/run_plan.h"

namespace recorder {

RunPlan::RunPlan(const std::vector<PlannedRow>& rows, const std::set<std::string>& silentHosts) : left_(rows.size()) {
  for (const PlannedRow& row : rows) {
    Host& host = hosts_[row.host];
    host.rows.push_back(row);
    if (host.rows.size() > 1) continue;
    host.isSilent = silentHosts.contains(row.host);
    LineOf(host).push_back(&host);
  }
}

RunPlan::Line& RunPlan::LineOf(const Host& host) { return lines_[host.isSilent][host.rows.front().isAlone]; }

const RunPlan::Line* RunPlan::NextLine() const {
  for (const bool isSilent : {true, false}) {
    for (const Line& line : lines_[isSilent]) {
      if (!line.empty()) return &line;
    }
  }
  return nullptr;
}

bool RunPlan::CanGoOn() const { return NextLine() != nullptr; }

int RunPlan::Take(Host& host) {
  const int number = host.rows.front().number;
  host.rows.pop_front();
  atHand_[number] = &host;
  return number;
}

std::vector<int> RunPlan::Next() {
  const Line* const next = NextLine();
  std::vector<int> rows;
  if (next == nullptr) return rows;
  Line& line = LineOf(*next->front());
  const std::size_t most = line.front()->rows.front().isAlone ? 1 : kMostRows;
  while (!line.empty() && rows.size() < most) {
    rows.push_back(Take(*line.front()));
    line.pop_front();
  }
  return rows;
}

void RunPlan::End(const std::vector<int>& rows, const std::set<int>& silent) {
  for (const int number : rows) {
    Host& host = *atHand_.at(number);
    atHand_.erase(number);
    host.isSilent = silent.contains(number);
    if (!host.rows.empty()) LineOf(host).push_back(&host);
  }
  left_ -= rows.size();
}

}  // namespace recorder
