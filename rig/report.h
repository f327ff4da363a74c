#pragma once

#include <string>
#include <vector>

namespace rig {

std::string NumberText(double value, int decimals = 1);

/// Prints what was measured and what was tried, line by line on standard output. One thread.
class Report {
 public:
  void Heading(const std::string& text);
  /// A figure that is no promise.
  void Note(const std::string& text);
  /// What must hold, with its figure.
  void Promise(bool isKept, const std::string& text);
  /// A row of a table in Markdown.
  void Row(const std::vector<std::string>& cells);

  /// All that was printed.
  const std::string& Text() const { return text_; }
  /// 0 when all promises held, else 1.
  int ExitStatus() const { return isBroken_ ? 1 : 0; }

 private:
  void Print(const std::string& line);

  std::string text_;
  bool isBroken_ = false;
};

}  // namespace rig
