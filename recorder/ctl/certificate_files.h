#pragma once

#include <filesystem>

namespace recorder {

/// A certificate and its key on disk, both PEM; behind the certificate may follow those that lead to its authority.
/// Both may be the same file.
struct CertificateFiles {
  std::filesystem::path certificate;
  std::filesystem::path key;
};

/// Where "recorderctl certificate make" puts this recorder's own.
inline CertificateFiles OwnCertificate(const std::filesystem::path& stateFolder) {
  return {stateFolder / "certificate.pem", stateFolder / "certificate-key.pem"};
}

}  // namespace recorder
