#pragma once

#include <string>
#include <vector>

#include "bench/comparison.h"

namespace bench {

/// What a ratio is wished to be.
struct Goal {
  enum class Kind { kAtMost, kAtLeast };
  Kind kind = Kind::kAtMost;
  double bound = 0;
};

/// One way and its figure, for the reader.
struct Side {
  std::string what;
  std::string figure;
};

/// The table of all figures, with the goals beside them. One thread.
class Table {
 public:
  /// `title` stands above the table: what the figures are true for.
  explicit Table(std::string title) : text_(std::move(title)) {}

  /// Tells on standard error how far the run is.
  void Add(const std::string& name, const Side& ours, const Side& other, double ratio, Goal goal);
  /// A row of times.
  void Add(const std::string& name, const std::string& ours, const std::string& other, const Comparison& times,
           Goal goal);
  /// Instead of rows that could not be filled.
  void AddWrong(const std::string& name, const std::string& mistake);

  const std::string& Markdown() const { return text_; }
  /// 1 when an answer was wrong. A goal that was missed is a figure like any other.
  int ExitStatus() const { return isWrong_ ? 1 : 0; }

 private:
  void AddLine(const std::vector<std::string>& cells);

  std::string text_;
  bool hasHead_ = false;
  bool isWrong_ = false;
};

}  // namespace bench
