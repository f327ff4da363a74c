#include "recorder/watch/runner.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

#include "recorder/records/records.h"
#include "recorder/utility/cause_table.h"
#include "recorder/utility/log.h"
#include "recorder/utility/text.h"
#include "recorder/watch/knock_work.h"
#include "recorder/watch/run_jobs.h"

namespace recorder {
namespace {

/// A run that was started begins after this time.
constexpr std::chrono::milliseconds kAskRunsAgain{500};
constexpr std::chrono::minutes kAfterFailure{1};

/// Those of stored cameras that were silent when they were contacted last.
void AddSilentHosts(const std::filesystem::path& stateFolder, std::set<std::string>& hosts) {
  const Records records(stateFolder);
  const auto outcomes = records.Outcomes();
  for (const CameraRecord& camera : records.List()) {
    const auto outcome = outcomes.find(camera.id);
    if (outcome == outcomes.end() || outcome->second.cause != Outcome::kTimedOut) continue;
    hosts.insert(NormalizedHost(camera.host));
  }
}

/// The rows of calls that begin. Their passwords are wiped at the end.
struct BegunCalls {
  BegunCalls() = default;
  ~BegunCalls() {
    for (std::vector<RunRow>& rows : calls) WipePasswords(rows);
  }
  BegunCalls(const BegunCalls&) = delete;
  BegunCalls& operator=(const BegunCalls&) = delete;

  std::vector<std::vector<RunRow>> calls;
};

std::vector<int> NumbersOf(const std::vector<RunRow>& rows) {
  std::vector<int> numbers;
  numbers.reserve(rows.size());
  for (const RunRow& row : rows) numbers.push_back(row.camera.id);
  return numbers;
}

std::set<int> SilentOf(const std::vector<RowOutcome>& outcomes) {
  std::set<int> silent;
  for (const RowOutcome& outcome : outcomes) {
    if (outcome.outcome == Outcome::kTimedOut) silent.insert(outcome.number);
  }
  return silent;
}

}  // namespace

void Runner::Update() {
  if (Clock::now() < lookAt_ || !Runs::AreThere(stateFolder_)) return;
  lookAt_ = Clock::now() + kAskRunsAgain;
  try {
    LookForRun();
  } catch (const std::runtime_error& error) {
    GiveUp(error);
  }
}

/// What is still at hand ends for itself, and Recover says then that nobody knows.
void Runner::GiveUp(const std::exception& error) {
  LogFailure("runs of tests wait: " + std::string(error.what()));
  lookAt_ = Clock::now() + kAfterFailure;
  isRecovered_ = false;
  isOver_ = true;
  ended_.clear();
}

void Runner::LookForRun() {
  Runs runs(stateFolder_);
  if (IsBusy()) return;
  plan_.reset();
  if (!std::exchange(isRecovered_, true)) runs.Recover();
  if (const auto run = runs.FindStarted()) Load(runs, *run);
}

bool Runner::IsBusy() const {
  const bool isWaitedFor = !atHand_.empty() || !knocks_.empty();
  return isWaitedFor || !ended_.empty() || (plan_ && !isOver_ && !plan_->IsDone());
}

void Runner::Load(const Runs& runs, int run) {
  std::vector<PlannedRow> rows;
  for (const RunCamera& row : runs.Waiting(run)) {
    rows.push_back({row.id, NormalizedHost(row.host), IsTestedAlone(row), row.port});
  }
  std::set<std::string> silent = runs.SilentHosts();
  AddSilentHosts(stateFolder_, silent);
  plan_.emplace(rows, silent, busyHosts_);
  run_ = run;
  isOver_ = false;
}

bool Runner::End(const CheckAnswer& answer) {
  if (answer.id <= kFirstJob) return false;
  if (const auto job = atHand_.extract(answer.id)) Take(OutcomesOf(job.mapped(), answer));
  if (const auto job = knocks_.extract(answer.id)) {
    plan_->EndKnocks(job.mapped(), SilentOf(OutcomesOf(job.mapped(), answer)));
  }
  return true;
}

void Runner::Take(const std::vector<RowOutcome>& outcomes) {
  std::vector<int> numbers;
  for (const RowOutcome& outcome : outcomes) {
    numbers.push_back(outcome.number);
    if (MayBeRefusedLogin(outcome.outcome)) refusals_.Add(digests_[outcome.number]);
    digests_.erase(outcome.number);
    if (isRecovered_) ended_.push_back(outcome);
  }
  plan_->End(numbers, SilentOf(outcomes));
}

std::size_t Runner::CallsWanted() const {
  const bool canGoOn = plan_ && !isOver_ && (plan_->CanGoOn() || plan_->CanKnock());
  return canGoOn ? kLeastCalls - std::min(kLeastCalls, atHand_.size() + knocks_.size()) : 0;
}

void Runner::StartAll(Checkers& checkers) {
  try {
    StartKnocks(checkers);
    StartRows(checkers);
  } catch (const std::runtime_error& error) {
    GiveUp(error);
  }
}

std::size_t Runner::FreeCalls(const Checkers& checkers) const {
  return std::min(checkers.Free(), kMostCalls - atHand_.size() - knocks_.size());
}

void Runner::StartKnocks(Checkers& checkers) {
  while (plan_ && !isOver_ && knocks_.size() < kMostKnocking && FreeCalls(checkers) > 0) {
    const std::vector<PlannedRow> rows = plan_->NextKnocks();
    if (rows.empty()) return;
    CheckJob job = KnockJobOf(rows);
    job.id = ++lastJob_;
    std::vector<int> numbers(rows.size());
    std::ranges::transform(rows, numbers.begin(), &PlannedRow::number);
    if (checkers.Start(job)) {
      knocks_.emplace(job.id, std::move(numbers));
    } else {
      plan_->EndKnocks(numbers, {});
    }
  }
}

void Runner::StartRows(Checkers& checkers) {
  const std::size_t most = FreeCalls(checkers);
  if (!plan_ || (ended_.empty() && (isOver_ || most == 0 || !plan_->CanGoOn()))) return;
  BegunCalls begun;
  Begin(most, begun.calls);
  for (const std::vector<RunRow>& rows : begun.calls) Start(rows, checkers);
}

void Runner::Begin(std::size_t most, std::vector<std::vector<RunRow>>& calls) {
  refusals_.Update();
  Runs runs(stateFolder_);
  Keep(runs);
  while (!isOver_ && calls.size() < most && plan_->CanGoOn()) {
    std::vector<int> next = plan_->Next();
    std::ranges::sort(next);
    auto rows = runs.Begin(run_, next);
    isOver_ = !rows;
    if (isOver_) plan_->End(next, {});
    if (isOver_) break;
    calls.push_back(*std::move(rows));
    TakeRefused(calls.back());
    std::vector<int> others;  // that came to something meanwhile
    std::ranges::set_difference(next, NumbersOf(calls.back()), std::back_inserter(others));
    plan_->End(others, {});
    if (calls.back().empty()) calls.pop_back();
  }
  Keep(runs);
}

/// Takes those rows out of a call whose login was just refused, and gives them that result.
void Runner::TakeRefused(std::vector<RunRow>& rows) {
  std::erase_if(rows, [this](RunRow& row) {
    if (!refusals_.Holds(refusals_.DigestOf(row))) return false;
    Wipe(row.password);
    ended_.push_back({.number = row.camera.id, .outcome = Outcome::kLoginRefused});
    return true;
  });
}

void Runner::Keep(Runs& runs) {
  if (ended_.empty()) return;
  runs.Finish(run_, ended_);
  ended_.clear();
}

void Runner::Start(const std::vector<RunRow>& rows, Checkers& checkers) {
  CheckJob job = JobOf(rows);
  job.id = ++lastJob_;
  for (const RunRow& row : rows) digests_[row.camera.id] = refusals_.DigestOf(row);
  if (checkers.Start(job)) {
    atHand_.emplace(job.id, NumbersOf(rows));
  } else {
    std::vector<RowOutcome> outcomes;  // nothing was sent
    outcomes.reserve(rows.size());
    for (const RunRow& row : rows) outcomes.push_back({.number = row.camera.id, .outcome = Outcome::kRecorderFailed});
    Take(outcomes);
  }
}

}  // namespace recorder
