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
    if (silentHosts.contains(row.host)) host.answers = Answers::kNo;
    LineOf(host).push_back(&host);
  }
}

RunPlan::~RunPlan() {
  for (const auto& [number, host] : atHand_) busyHosts_.GiveBack(host->name);
}

/// Who is tested alone keeps nobody waiting, whether it answers or not.
RunPlan::Line& RunPlan::LineOf(const Host& host) {
  const bool isAlone = host.rows.front().isAlone;
  const bool needsKnock = host.answers == Answers::kUnknown && !isAlone;
  const Answers answers = needsKnock || host.answers == Answers::kNo ? host.answers : Answers::kYes;
  return lines_[static_cast<std::size_t>(answers)][isAlone];
}

/// The first whom nobody else contacts. The others, which are few, stand at the front.
std::vector<RunPlan::Host*> RunPlan::FreeOf(const Line& line, std::size_t most) const {
  std::vector<Host*> hosts;
  for (auto host = line.begin(); host != line.end() && hosts.size() < most; ++host) {
    if (!busyHosts_.IsBusy((*host)->name)) hosts.push_back(*host);
  }
  return hosts;
}

bool RunPlan::CanKnock() const { return !FreeOf(lines_.front().front(), 1).empty(); }

bool RunPlan::IsKnocking() const { return knocks_ > 0 || CanKnock(); }

std::vector<RunPlan::Host*> RunPlan::NextHosts() const {
  const bool mayBeFew = !IsKnocking();
  for (const Answers answers : {Answers::kNo, Answers::kYes}) {
    for (const bool isAlone : {false, true}) {
      const std::size_t most = isAlone ? 1 : kMostRows;
      std::vector<Host*> hosts = FreeOf(lines_[static_cast<std::size_t>(answers)][isAlone], most);
      if (hosts.size() == most || (mayBeFew && !hosts.empty())) return hosts;
    }
  }
  return {};
}

bool RunPlan::CanGoOn() const { return !NextHosts().empty(); }

const PlannedRow& RunPlan::Take(Host& host) {
  Line& line = LineOf(host);
  line.erase(std::ranges::find(line, &host));
  busyHosts_.Take(host.name);
  const PlannedRow& row = host.rows.front();
  atHand_[row.number] = &host;
  return row;
}

std::vector<PlannedRow> RunPlan::NextKnocks() {
  std::vector<PlannedRow> rows;
  for (Host* const host : FreeOf(lines_.front().front(), kMostKnocks)) rows.push_back(Take(*host));
  knocks_ += rows.size();
  return rows;
}

std::vector<int> RunPlan::Next() {
  std::vector<int> rows;
  for (Host* const host : NextHosts()) {
    rows.push_back(Take(*host).number);
    host->rows.pop_front();
  }
  return rows;
}

void RunPlan::GiveBack(const std::vector<int>& rows, const std::set<int>& silent) {
  for (const int number : rows) {
    Host& host = *atHand_.at(number);
    atHand_.erase(number);
    busyHosts_.GiveBack(host.name);
    host.answers = silent.contains(number) ? Answers::kNo : Answers::kYes;
    if (!host.rows.empty()) LineOf(host).push_back(&host);
  }
}

void RunPlan::EndKnocks(const std::vector<int>& rows, const std::set<int>& silent) {
  GiveBack(rows, silent);
  knocks_ -= rows.size();
}

void RunPlan::End(const std::vector<int>& rows, const std::set<int>& silent) {
  GiveBack(rows, silent);
  left_ -= rows.size();
}

}  // namespace recorder
