// Runs a target once with each file of the folders that are named, for compilers without libFuzzer.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <vector>

#include "tests/fuzz/fuzz.h"

namespace fs = std::filesystem;

namespace {

/// Memory of exactly the file's size, so that a sanitizer sees the first byte that is read behind it.
std::vector<char> Read(const fs::path& file) {
  std::vector<char> bytes(fs::file_size(file));
  std::ifstream(file, std::ios::binary).read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return bytes;
}

}  // namespace

int main(int argc, char** argv) {
  int count = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : fs::recursive_directory_iterator(argv[i])) {
      if (!entry.is_regular_file()) continue;
      std::printf("%s\n", entry.path().c_str());
      std::fflush(stdout);  // the last line names the input that ended the program
      const std::vector<char> bytes = Read(entry.path());
      recorder::RunInput({bytes.data(), bytes.size()});
      ++count;
    }
  }
  return count > 0 ? 0 : 1;
}
