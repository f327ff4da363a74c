#pragma once

#include <array>
#include <cstdint>
#include <filesystem>

#include "recorder/ctl/certificate_files.h"
#include "recorder/utility/files.h"

namespace recorder {

/// The certificate that the web server shows, with its key in one file: a copy of what an administrator keeps elsewhere
/// and renews when he likes. So what the web server reads is always a pair that was tried. One thread.
class ServedCertificate {
 public:
  /// Makes `copy`. Throws std::runtime_error that names the file and what is wrong with it.
  ServedCertificate(CertificateFiles files, std::filesystem::path copy);

  /// Call now and then. True when there is a new copy, which the web server has to read. Files that are changing are
  /// waited for; those that cannot be used are logged once, and the copy stays as it is. A copy that ends within 30
  /// days is logged once as well. Never throws.
  bool Update();

 private:
  using Stamps = std::array<FileStamp, 2>;
  Stamps Look() const { return {StampOf(files_.certificate), StampOf(files_.key)}; }
  void Copy();
  void WarnOfEnd();

  const CertificateFiles files_;
  const std::filesystem::path copy_;
  Stamps seen_;           // at the last call
  Stamps tried_;          // to copy
  std::int64_t end_ = 0;  // of the copy
  bool isWarned_ = false;
};

}  // namespace recorder
