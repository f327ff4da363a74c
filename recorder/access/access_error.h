#pragma once

#include <stdexcept>
#include <string>

namespace recorder {

/// Why a change of users, sessions or tokens is refused, in words for whoever wanted it.
class AccessError : public std::runtime_error {
 public:
  enum class Kind {
    kInvalid,   ///< a name or password that cannot be
    kMissing,   ///< there is no such user, session or token
    kConflict,  ///< it would be there twice, or nobody would be left who manages users
  };
  AccessError(Kind kind, const std::string& reason) : std::runtime_error(reason), kind_(kind) {}
  Kind GetKind() const { return kind_; }

 private:
  Kind kind_;
};

}  // namespace recorder
