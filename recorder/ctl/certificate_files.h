#pragma once

#include <cstdint>
#include <filesystem>

#include "recorder/utility/state_files.h"

namespace recorder {

/// A certificate and its key on disk, both PEM; behind the certificate may follow those that lead to its authority.
/// Both may be the same file.
struct CertificateFiles {
  std::filesystem::path certificate;
  std::filesystem::path key;
};

/// Where "recorderctl certificate make" puts this recorder's own.
inline CertificateFiles OwnCertificate(const std::filesystem::path& stateFolder) {
  return {stateFolder / kCertificateFile, stateFolder / kCertificateKeyFile};
}

/// Reads both as the web server does. Returns when the certificate ends, in seconds since 1970. Throws
/// std::runtime_error that says what is wrong with which of `named`, which is what people call the two.
std::int64_t TryCertificate(const CertificateFiles& files, const CertificateFiles& named);

}  // namespace recorder
