#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

namespace rig {

/// A folder of its own for one test, gone with it.
class TempFolder {
 public:
  TempFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "recorder-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder");
    path_ = name;
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::filesystem::path& Path() const { return path_; }

  std::filesystem::path Write(const std::string& name, const std::string& content) const {
    auto file = path_ / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << content;
    return file;
  }

 private:
  std::filesystem::path path_;
};

}  // namespace rig
