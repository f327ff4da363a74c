#pragma once

#include <string>
#include <vector>

#include "recorder/utility/files.h"
#include "recorder/utility/folder_watch.h"

namespace recorder {

/// A model file, and what tells whether it has changed.
struct ModelFileState {
  std::string path;
  FileStamp stamp;

  bool operator==(const ModelFileState&) const = default;
};

/// The files "*.json" of `folder`, sorted by path: two equal answers mean that nothing has changed. None where there is
/// no such folder; less than all of them where it cannot be read to its end.
std::vector<ModelFileState> ListModelFolder(const std::string& folder);

/// A folder of model files, which need not be there yet, and what it held when it was last listed. One thread at a
/// time.
class ModelFolder {
 public:
  explicit ModelFolder(std::string folder) : folder_(std::move(folder)), watch_(folder_) {}

  /// Looks again: true when a file was added, removed or changed since the last look.
  bool HasChanged();

  const std::string& Path() const { return folder_; }
  const std::vector<ModelFileState>& Files() const { return files_; }

 private:
  bool IsStillMissing() const;
  bool AreFilesTheSame() const;

  std::string folder_;
  FolderWatch watch_;
  FileStamp stamp_;         // of the folder: as there is none until it was found
  bool isSettled_ = false;  // an unchanged stamp means that no file came or went
  std::vector<ModelFileState> files_;
};

}  // namespace recorder
