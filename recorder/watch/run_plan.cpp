#include "recorder/watch/run_plan.h"

#include <algorithm>

namespace recorder {

RunPlan::RunPlan(const std::vector<PlannedRow>& rows, const std::set<std::string>& silentHosts, BusyHosts& busyHosts)
    : busyHosts_(busyHosts), left_(rows.size()) {
  for (const PlannedRow& row : rows) {
    Host& host = hosts_[row.host];
    host.rows.push_back(row);
    if (host.rows.size() > 1) continue;
    host.name = row.host;
    host.isSilent = silentHosts.contains(row.host);
    LineOf(host).push_back(&host);
  }
}

RunPlan::~RunPlan() {
  for (const auto& [number, host] : atHand_) busyHosts_.GiveBack(host->name);
}

RunPlan::Line& RunPlan::LineOf(const Host& host) { return lines_[host.isSilent][host.rows.front().isAlone]; }

/// The first whom nobody else contacts. Those few stand at the front.
RunPlan::Host* RunPlan::NextOf(const Line& line) const {
  const auto isFree = [this](const Host* host) { return !busyHosts_.IsBusy(host->name); };
  const auto next = std::ranges::find_if(line, isFree);
  return next == line.end() ? nullptr : *next;
}

RunPlan::Host* RunPlan::NextHost() const {
  for (const bool isSilent : {true, false}) {
    for (const Line& line : lines_[isSilent]) {
      if (Host* const host = NextOf(line)) return host;
    }
  }
  return nullptr;
}

bool RunPlan::CanGoOn() const { return NextHost() != nullptr; }

int RunPlan::Take(Host& host) {
  const int number = host.rows.front().number;
  Line& line = LineOf(host);
  line.erase(std::ranges::find(line, &host));
  host.rows.pop_front();
  atHand_[number] = &host;
  busyHosts_.Take(host.name);
  return number;
}

std::vector<int> RunPlan::Next() {
  std::vector<int> rows;
  Host* next = NextHost();
  if (next == nullptr) return rows;
  const Line& line = LineOf(*next);
  const std::size_t most = next->rows.front().isAlone ? 1 : kMostRows;
  for (; next != nullptr && rows.size() < most; next = NextOf(line)) rows.push_back(Take(*next));
  return rows;
}

void RunPlan::End(const std::vector<int>& rows, const std::set<int>& silent) {
  for (const int number : rows) {
    Host& host = *atHand_.at(number);
    atHand_.erase(number);
    busyHosts_.GiveBack(host.name);
    host.isSilent = silent.contains(number);
    if (!host.rows.empty()) LineOf(host).push_back(&host);
  }
  left_ -= rows.size();
}

}  // namespace recorder
