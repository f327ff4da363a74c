#include "recorder/ctl/backup/state_parts.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <string_view>
#include <system_error>

#include "recorder/utility/limits.h"
#include "recorder/utility/state_files.h"

namespace recorder {
namespace fs = std::filesystem;
namespace {

constexpr std::string_view kFiles[] = {
    kRecordsFile, kKeyFile, kUsersFile, kGrantsFile, kCertificateFile, kCertificateKeyFile,
};

/// Of JSON files with any names.
constexpr std::string_view kFolders[] = {kModelsFolder, kCapabilitiesFolder};

bool IsFileName(std::string_view name) {
  return name.ends_with(".json") && !name.starts_with('.') && name.find('/') == std::string_view::npos &&
         name.find('\0') == std::string_view::npos;
}

}  // namespace

bool IsPart(const std::string& name) {
  if (std::find(std::begin(kFiles), std::end(kFiles), name) != std::end(kFiles)) return true;
  return std::any_of(std::begin(kFolders), std::end(kFolders), [&](std::string_view folder) {
    return name.starts_with(std::string(folder) + '/') && IsFileName(std::string_view(name).substr(folder.size() + 1));
  });
}

std::uint64_t LargestSize(const std::string& part) {
  return part == kRecordsFile ? std::numeric_limits<std::uint64_t>::max() : kLargestFile;
}

std::vector<std::string> PartsIn(const fs::path& stateFolder) {
  std::vector<std::string> parts;
  for (const std::string_view file : kFiles) {
    if (fs::exists(stateFolder / file)) parts.emplace_back(file);
  }
  for (const std::string_view folder : kFolders) {
    std::error_code none;  // the folder is not there
    for (const auto& entry : fs::directory_iterator(stateFolder / folder, none)) {
      const std::string part = std::string(folder) + '/' + entry.path().filename().string();
      if (IsPart(part) && entry.is_regular_file()) parts.push_back(part);
    }
  }
  return parts;
}

}  // namespace recorder
