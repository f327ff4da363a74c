#pragma once

namespace recorder {

/// Login methods that we can answer, by what they show of the password to whoever listens: the weakest first. The
/// records keep these numbers.
enum class LoginMethod {
  kNone = 0,    ///< none, or none that we know
  kBasic = 1,   ///< shows the password (RFC 7617)
  kMd5 = 2,     ///< Digest (RFC 7616)
  kSha256 = 3,  ///< Digest with SHA-256
};

/// A name for users, such as "Digest MD5".
constexpr const char* NameOf(LoginMethod method) {
  switch (method) {
    case LoginMethod::kBasic:
      return "Basic";
    case LoginMethod::kMd5:
      return "Digest MD5";
    case LoginMethod::kSha256:
      return "Digest SHA-256";
    default:
      return "none";
  }
}

}  // namespace recorder
