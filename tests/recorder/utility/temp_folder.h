#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

/// A folder of its own for one test, gone with it.
class TempFolder {
 public:
  TempFolder() : path_(mkdtemp(name_.data())) {}
  ~TempFolder() { std::filesystem::remove_all(path_); }
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
  std::string name_ = (std::filesystem::temp_directory_path() / "recorder-test-XXXXXX").string();
  std::filesystem::path path_;
};
