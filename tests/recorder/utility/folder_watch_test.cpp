#include "recorder/utility/folder_watch.h"

#include <gtest/gtest.h>

#include "rig/temp_folder.h"

namespace recorder {
namespace {

TEST(FolderWatchTest, SeesAtOnceWhatChangesInAFolderThatWasMadeAnew) {
  const rig::TempFolder parent;
  const std::filesystem::path folder = parent.Path() / "models";
  std::filesystem::create_directory(folder);
  FolderWatch watch(folder, Clock::now());
  EXPECT_TRUE(watch.MayHaveChanged());
  std::filesystem::remove(folder);
  std::filesystem::create_directory(folder);
  EXPECT_TRUE(watch.MayHaveChanged());
  std::filesystem::create_directory(folder / "new");
  EXPECT_TRUE(watch.MayHaveChanged());
}

}  // namespace
}  // namespace recorder
