#pragma once

#include <string>
#include <vector>

namespace recorder {

/// A certificate that signs itself, and its key.
struct SelfSigned {
  std::string certificate;  ///< PEM
  std::string key;          ///< PEM, a secret
  std::string fingerprint;  ///< SHA-256, as browsers show it: "0A:1B:..."
};

/// Makes one for a server with these names and numeric addresses (RFC 5280; an EC key of P-256). It is good from
/// yesterday on, so that a clock that is late does not matter, for `days` in all. It can vouch for no other
/// certificate. Throws std::runtime_error.
SelfSigned MakeSelfSigned(const std::vector<std::string>& names, int days);

}  // namespace recorder
