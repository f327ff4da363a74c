#pragma once

#include <string>

#include "recorder/utility/config.h"

namespace recorder {

/// The Argon2id hash of a password (RFC 9106), in the text form that libsodium gives it. Takes the time and memory of
/// `cost`. Throws std::runtime_error when the memory cannot be had. Any thread.
std::string HashPassword(const std::string& password, const HashCost& cost);

/// True when `password` is the one of `hash`: Argon2id, or bcrypt of earlier versions. Any thread.
bool IsPasswordOf(const std::string& hash, const std::string& password);

/// True for an Argon2id hash of any cost.
bool IsCurrentKind(const std::string& hash);

/// True when HashPassword would make a hash of another kind or cost.
bool IsOutdatedHash(const std::string& hash, const HashCost& cost);

}  // namespace recorder
