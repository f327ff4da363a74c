#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "rig/recorder.h"

namespace long_tests {

/// Stores cameras with recorderctl, which may be killed meanwhile, and remembers what it acknowledged. One thread.
class RecordKeeper {
 public:
  explicit RecordKeeper(const rig::TestRecorder& recorder) : recorder_(recorder) {}

  /// One camera.
  void AddOne() {
    const std::string name = NewCamera();
    const std::string port = name.substr(name.find(' ') + 1);
    const rig::Finished add =
        recorder_.Control({"camera", "add", "--name", name, "--vendor", "Rig", "--model", "C0", "--channel", "1",
                           "--host", "127.0.0.1", "--port", port, "--user", "admin"},
                          "secret of " + name + "\n");
    if (add.output.starts_with("added camera ") && add.output.ends_with('\n')) acknowledged_.insert(name);
  }

  /// A file of some.
  void ImportSome() {
    const rig::TempFolder folder;
    std::vector<std::string> names;
    std::string csv = "name,vendor,model,channel,host,port,user,password\n";
    for (int i = 0; i < kImportedAtOnce; ++i) {
      const std::string name = names.emplace_back(NewCamera());
      csv += name + ",Rig,C0,1,127.0.0.1," + name.substr(name.find(' ') + 1) + ",admin,secret\n";
    }
    const rig::Finished import = recorder_.Control({"camera", "import", folder.Write("cameras.csv", csv).string()});
    const std::string whole = "imported " + std::to_string(kImportedAtOnce) + " cameras\n";
    if (import.output == whole) acknowledged_.insert(names.begin(), names.end());
  }

  /// What is wrong with the stored cameras: the database does not open, an acknowledged camera is missing, one is there
  /// twice or differs from what was to be stored. "" for nothing.
  std::string Mistake() const {
    const rig::Finished list = recorder_.Control({"camera", "list"});
    if (list.status != 0) return "the database does not open: " + list.output;
    std::set<std::string> found;
    std::istringstream lines(list.output);
    std::string line;
    std::getline(lines, line);  // the heading
    while (std::getline(lines, line)) {
      const std::string columns = line.substr(line.find('\t') + 1);
      const std::size_t nameStart = columns.find('\t') + 1;
      const std::string name = columns.substr(nameStart, columns.find('\t', nameStart) - nameStart);
      const auto expected = expected_.find(name);
      if (expected == expected_.end() || expected->second != columns) return "a camera that nobody stored: " + line;
      if (!found.insert(name).second) return "a camera that is there twice: " + line;
    }
    for (const std::string& name : acknowledged_) {
      if (!found.contains(name)) return "an acknowledged camera is lost: " + name;
    }
    return "";
  }

  std::size_t Acknowledged() const { return acknowledged_.size(); }
  /// Those that were tried, acknowledged or not.
  std::size_t Tried() const { return expected_.size(); }

 private:
  static constexpr int kImportedAtOnce = 5;
  static constexpr int kFirstPort = 1024;

  /// A new camera's name; how it must be listed is remembered.
  std::string NewCamera() {
    const std::string port = std::to_string(kFirstPort + ++count_);
    std::string name = "camera " + port;
    expected_[name] = "enabled\t" + name + "\tRig\tC0\t1\t127.0.0.1\t" + port;
    return name;
  }

  const rig::TestRecorder& recorder_;
  std::map<std::string, std::string> expected_;  ///< name and the columns that follow its id
  std::set<std::string> acknowledged_;
  int count_ = 0;
};

/// What is wrong with the files that are kept of asked cameras; "" for nothing.
inline std::string CapabilityFileMistake(const std::filesystem::path& stateFolder) {
  std::error_code noneYet;
  for (const auto& entry : std::filesystem::directory_iterator(stateFolder / "capabilities", noneYet)) {
    if (entry.path().extension() != ".json") continue;
    const std::string text = rig::ReadText(entry.path());
    try {
      if (!rig::ParseJson(text)["models"][0]["stream"].isObject()) return "a file without a stream: " + text;
    } catch (const Json::Exception&) {
      return "a file that is not whole: " + text;
    }
  }
  return "";
}

}  // namespace long_tests
