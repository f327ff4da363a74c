#pragma once

#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>

#include "rig/report.h"

// Two ways to the same answer, in turn, and a row of the table for them. Times are in milliseconds.

namespace bench {

/// An answer that was timed was not the right one.
struct WrongAnswer : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Gets an answer, checks it, and returns a figure of it, mostly how long it took without the check. Throws
/// WrongAnswer.
using Way = std::function<double()>;

template <class Work>
double TimeOf(const Work& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

/// Medians. The ratio's is that of the pairs' ratios, since whatever slows the machine slows both of a pair.
struct Comparison {
  double ours = 0;
  double other = 0;
  double ratio = 0;
};

inline constexpr int kPairs = 9;

/// Each way `pairs` times, in turn.
Comparison Compare(const Way& ours, const Way& other, int pairs = kPairs);

/// What a ratio is wished to be.
struct Goal {
  enum class Kind { kAtMost, kAtLeast };
  Kind kind = Kind::kAtMost;
  double bound = 0;
  double orMore = 0;  ///< of times: so many milliseconds more are no miss either
};

/// One way and its figure, for the reader.
struct Side {
  std::string what;
  std::string figure;
};

/// With a unit that suits it.
std::string TimeText(double milliseconds);

void AddHead(rig::Report& table);
/// A goal that was missed is a figure like any other.
void AddRow(rig::Report& table, const std::string& name, const Side& ours, const Side& other, double ratio, Goal goal);
/// A row of times.
void AddRow(rig::Report& table, const std::string& name, const std::string& ours, const std::string& other,
            const Comparison& times, Goal goal);

}  // namespace bench
