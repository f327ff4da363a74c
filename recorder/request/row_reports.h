#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "recorder/utility/outcome.h"

namespace recorder {

/// A camera as a request names it, which is what tells the rows of a list apart.
struct CameraEntry {
  std::string vendor;
  std::string model;
  std::string host;
  int port = 0;
  std::string user;

  bool operator==(const CameraEntry&) const = default;
};

/// How the work for one row of a list ended.
struct RowReport {
  CameraEntry camera;
  Outcome cause = Outcome::kOk;
};

/// What the threads that work on the rows of one list have to report. Any thread.
class RowReports {
 public:
  void Add(RowReport report) {
    const std::lock_guard lock(mutex_);
    reports_.push_back(std::move(report));
  }

  std::vector<RowReport> All() const {
    const std::lock_guard lock(mutex_);
    return reports_;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<RowReport> reports_;
};

}  // namespace recorder
