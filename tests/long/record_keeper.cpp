#include "tests/long/record_keeper.h"

#include <json/json.h>

#include <sstream>
#include <vector>

namespace long_tests {

using namespace rig;

namespace fs = std::filesystem;

namespace {

constexpr int kImportedAtOnce = 5;
constexpr int kFirstPort = 1024;

}  // namespace

std::string RecordKeeper::NewCamera() {
  const std::string port = std::to_string(kFirstPort + ++count_);
  std::string name = "camera " + port;
  expected_[name] = "enabled\t" + name + "\tRig\tC0\t1\t127.0.0.1\t" + port;
  return name;
}

void RecordKeeper::AddOne() {
  const std::string name = NewCamera();
  const std::string port = name.substr(name.find(' ') + 1);
  const Finished add = recorder_.Control({"camera", "add", "--name", name, "--vendor", "Rig", "--model", "C0",
                                          "--channel", "1", "--host", "127.0.0.1", "--port", port, "--user", "admin"},
                                         "secret of " + name + "\n");
  if (add.output.starts_with("added camera ") && add.output.ends_with('\n')) acknowledged_.insert(name);
}

void RecordKeeper::ImportSome() {
  const TempFolder folder;
  std::vector<std::string> names;
  std::string csv = "name,vendor,model,channel,host,port,user,password\n";
  for (int i = 0; i < kImportedAtOnce; ++i) {
    const std::string name = names.emplace_back(NewCamera());
    csv += name + ",Rig,C0,1,127.0.0.1," + name.substr(name.find(' ') + 1) + ",admin,secret\n";
  }
  const Finished import = recorder_.Control({"camera", "import", folder.Write("cameras.csv", csv).string()});
  const std::string whole = "imported " + std::to_string(kImportedAtOnce) + " cameras\n";
  if (import.output == whole) acknowledged_.insert(names.begin(), names.end());
}

std::string RecordKeeper::Mistake() const {
  const Finished list = recorder_.Control({"camera", "list"});
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

std::string CapabilityFileMistake(const fs::path& stateFolder) {
  std::error_code noneYet;
  for (const auto& entry : fs::directory_iterator(stateFolder / "capabilities", noneYet)) {
    if (entry.path().extension() != ".json") continue;
    const std::string text = ReadText(entry.path());
    try {
      if (!ParseJson(text)["models"][0]["stream"].isObject()) return "a file without a stream: " + text;
    } catch (const Json::Exception&) {
      return "a file that is not whole: " + text;
    }
  }
  return "";
}

}  // namespace long_tests
