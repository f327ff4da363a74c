#pragma once

#include <string>

#include "recorder/device/check/camera_driver.h"

namespace recorder {

/// A camera that had to be asked first and did not answer: it has no path, and its own check names the cause.
class UnansweredDriver : public CameraDriver {
 public:
  explicit UnansweredDriver(Outcome outcome) : outcome_(outcome) {}

  bool NeedsSourcePath() override { return false; }
  bool HasStreamPath() override { return false; }
  int GetStreamPath(std::string& /*path*/, int& /*port*/) override { return -1; }
  Outcome VerifyConnection() override { return outcome_; }
  int SelectVideoType(int /*videoType*/, int /*streamNumber*/) override { return -1; }
  int GetSnapshotPath(std::string& /*path*/, int& /*port*/, int& /*kind*/) override { return -1; }
  Outcome TakeSnapshot(const CameraAddress& /*address*/, const std::string& /*setting*/,
                       std::string& /*jpeg*/) override {
    return outcome_;
  }

 private:
  const Outcome outcome_;
};

}  // namespace recorder
