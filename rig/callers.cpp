#include "rig/callers.h"

#include <algorithm>
#include <chrono>

namespace rig {

namespace {

constexpr std::size_t kMostTroubles = 10;
constexpr std::chrono::milliseconds kPauseAfterFailure{20};  // nobody asks a server that is away without a pause

void Note(Tally& tally, const Question& question, const std::string& trouble) {
  if (tally.troubles.size() < kMostTroubles) tally.troubles.push_back(question.method + ": " + trouble);
}

void Judge(Tally& tally, const Question& question, const Reply& reply) {
  if (reply.hasStrayBytes) {
    ++tally.stray;
    Note(tally, question, "more than one answer came");
  }
  if (reply.status >= 500) {
    const bool saysWhy = reply.contentType == "application/json" && reply.body.ends_with('}');
    ++(saysWhy ? tally.failed : tally.wrong);
    return Note(tally, question, "status " + std::to_string(reply.status) + ", " + reply.body);
  }
  const std::string mistake = reply.status == 200 ? question.mistake(reply) : "status " + std::to_string(reply.status);
  if (mistake.empty()) {
    ++tally.answered;
  } else {
    ++tally.wrong;
    Note(tally, question, mistake);
  }
}

/// Asks one question; false when it was not answered.
bool Ask(HttpClient& client, const Question& question, Tally& tally) {
  const auto start = std::chrono::steady_clock::now();
  try {
    const long answered = tally.answered;
    Judge(tally, question, client.Ask(question.request));
    if (tally.answered == answered) return false;
  } catch (const NoAnswer& failure) {
    ++tally.unanswered;
    Note(tally, question, failure.what());
    return false;
  }
  const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
  tally.milliseconds[question.method].push_back(time.count());
  return true;
}

}  // namespace

void Tally::Add(const Tally& other) {
  answered += other.answered;
  wrong += other.wrong;
  failed += other.failed;
  unanswered += other.unanswered;
  stray += other.stray;
  for (const auto& [method, times] : other.milliseconds) {
    milliseconds[method].insert(milliseconds[method].end(), times.begin(), times.end());
  }
  for (const std::string& trouble : other.troubles) {
    if (troubles.size() < kMostTroubles) troubles.push_back(trouble);
  }
}

double Median(std::vector<double> values) {
  if (values.empty()) return 0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

Callers::Callers(int port, std::vector<Source> sources, long enough) : enough_(enough) {
  for (Source& source : sources) {
    threads_.emplace_back([this, port, source = std::move(source)] { AskOn(port, source); });
  }
}

void Callers::AskOn(int port, const Source& source) {
  HttpClient client(port);
  Tally tally;
  while (!isStopped_ && (enough_ == 0 || begun_++ < enough_)) {
    if (!Ask(client, source(), tally)) std::this_thread::sleep_for(kPauseAfterFailure);
  }
  if (!client.IsQuiet()) ++tally.stray;
  const std::lock_guard lock(mutex_);
  tally_.Add(tally);
}

Tally Callers::Wait() {
  for (std::thread& thread : threads_) thread.join();
  threads_.clear();
  return tally_;
}

Tally Callers::Stop() {
  isStopped_ = true;
  return Wait();
}

}  // namespace rig
