#pragma once

#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>

// Two ways to the same answer, in turn. Times are in milliseconds.

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

/// With a unit that suits it.
std::string TimeText(double milliseconds);
std::string NumberText(double value, int decimals);

}  // namespace bench
