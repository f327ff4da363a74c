#pragma once

#include <string>

namespace bench {

/// The promises that were tried: one printed line each, with its figure. One thread.
class Report {
 public:
  void Heading(const std::string& text);
  /// A figure that is no promise.
  void Note(const std::string& text);
  void Promise(bool isKept, const std::string& text);

  /// 0 when all promises held, else 1.
  int ExitStatus() const { return broken_ == 0 ? 0 : 1; }

 private:
  int broken_ = 0;
};

}  // namespace bench
