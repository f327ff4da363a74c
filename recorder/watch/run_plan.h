#pragma once

#include <array>
#include <cstddef>
#include <deque>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "recorder/watch/busy_hosts.h"

namespace recorder {

/// A row of a run that waits.
struct PlannedRow {
  int number = 0;
  std::string host;      ///< one text for one host, see NormalizedHost
  bool isAlone = false;  ///< it is tested by a call of its own; others share one
  int port = 0;
};

/// Which rows of a run are tested next. A call for several lasts as long as its slowest row, so that rows of hosts that
/// are silent go with each other, and before the others, whose calls fill what gaps these leave. Silent is one that
/// was so the last time, or else does not answer a knock: a connection over which nothing is sent. As long as there
/// are hosts to knock at, calls for several begin with as many rows as they may have. Two rows of one host are never at
/// hand at once, nor one of a host that is knocked at or that others contact.
///
/// Thread:  one. Nothing waits.
/// Time:    each call but the first takes as long as the rows that it is about.
class RunPlan {
 public:
  /// Rows of one call.
  static constexpr std::size_t kMostRows = 10;
  /// Hosts that are knocked at together.
  static constexpr std::size_t kMostKnocks = 256;

  /// `busyHosts` outlives it. What is at hand at its end is so no more.
  RunPlan(const std::vector<PlannedRow>& rows, const std::set<std::string>& silentHosts, BusyHosts& busyHosts);
  ~RunPlan();
  RunPlan(const RunPlan&) = delete;
  RunPlan& operator=(const RunPlan&) = delete;

  /// Rows, at most kMostKnocks, whose hosts are to be knocked at before they can be tested. They are at hand until
  /// EndKnocks. None: nothing is to be knocked at now.
  std::vector<PlannedRow> NextKnocks();

  bool CanKnock() const;

  /// Says which of these hosts did not answer.
  void EndKnocks(const std::vector<int>& rows, const std::set<int>& silent);

  /// Whether a row may be tested now.
  bool CanGoOn() const;

  /// The rows of the next call, which are at hand from then on until their End. None: CanGoOn says no.
  std::vector<int> Next();

  /// Says that these rows are at hand no more, and which of them timed out.
  void End(const std::vector<int>& rows, const std::set<int>& silent);

  /// Whether no row waits or is at hand.
  bool IsDone() const { return left_ == 0; }

 private:
  enum class Answers { kUnknown, kNo, kYes };
  struct Host {
    std::string name;
    std::deque<PlannedRow> rows;
    Answers answers = Answers::kUnknown;
  };
  using Line = std::deque<Host*>;  // of hosts that are not at hand, by what their first rows are

  Line& LineOf(const Host& host);
  std::vector<Host*> FreeOf(const Line& line, std::size_t most) const;
  bool IsKnocking() const;
  std::vector<Host*> NextHosts() const;
  const PlannedRow& Take(Host& host);
  void GiveBack(const std::vector<int>& rows, const std::set<int>& silent);

  BusyHosts& busyHosts_;
  std::unordered_map<std::string, Host> hosts_;
  std::unordered_map<int, Host*> atHand_;     // by row
  std::array<std::array<Line, 2>, 3> lines_;  // by whether it answers, and by whether the row is alone
  std::size_t knocks_ = 0;                    // of those at hand
  std::size_t left_;
};

}  // namespace recorder
