#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "recorder/records/records.h"

namespace recorder {

/// A folder with a link "trusted" in it as long as anybody is trusted. The web server looks for that before it takes
/// anything below /trusted/, so that keys come and go without a restart, which would make requests wait or lose them.
/// One thread.
class TrustedRoute {
 public:
  /// Makes the folder.
  TrustedRoute(const std::filesystem::path& folder, std::filesystem::path stateFolder);

  /// Makes or removes the link as the records say; call now and then. Never throws: where that fails, or the records
  /// cannot be read, nobody is trusted, which is logged once.
  void Update();

 private:
  void SetOpen(bool isTrusted);
  bool IsAnybodyTrusted();

  const std::filesystem::path link_;
  const std::filesystem::path stateFolder_;
  std::optional<Records> records_;
  bool isOpen_ = false;
  std::string failure_;  // that was logged last
};

}  // namespace recorder
