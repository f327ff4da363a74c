#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <string>

#include "rig/recorder.h"

namespace long_tests {

/// Stores cameras with recorderctl, which may be killed meanwhile, and remembers what it acknowledged. One thread.
class RecordKeeper {
 public:
  explicit RecordKeeper(const rig::TestRecorder& recorder) : recorder_(recorder) {}

  /// One camera, or a file of some.
  void AddOne();
  void ImportSome();

  /// What is wrong with the stored cameras: the database does not open, an acknowledged camera is missing, one is there
  /// twice or differs from what was to be stored. "" for nothing.
  std::string Mistake() const;

  std::size_t Acknowledged() const { return acknowledged_.size(); }
  /// Those that were tried, acknowledged or not.
  std::size_t Tried() const { return expected_.size(); }

 private:
  /// A new camera's name; how it must be listed is remembered.
  std::string NewCamera();

  const rig::TestRecorder& recorder_;
  std::map<std::string, std::string> expected_;  ///< name and the columns that follow its id
  std::set<std::string> acknowledged_;
  int count_ = 0;
};

/// What is wrong with the files that are kept of asked cameras; "" for nothing.
std::string CapabilityFileMistake(const std::filesystem::path& stateFolder);

}  // namespace long_tests
