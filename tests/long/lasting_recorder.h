#pragma once

#include <memory>

#include "rig/recorder.h"

namespace long_tests {

/// A recorder that is started again, with the same state on the same port, whenever it was killed.
class LastingRecorder {
 public:
  explicit LastingRecorder(const rig::TestRecorder::Options& options);

  const rig::TestRecorder& Asked() const { return first_; }

  /// Throws when it does not come up.
  void StartAgain();

 private:
  const int workers_;
  const bool isWatching_;
  rig::TestRecorder first_;
  std::unique_ptr<rig::Process> again_;
};

}  // namespace long_tests
