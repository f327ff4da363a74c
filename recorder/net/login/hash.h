#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

// Hashes that logins are made of. `algorithm` is OpenSSL's name of it, such as "SHA256"; `parts` are hashed as one
// text, without anything between them.

namespace recorder {

/// In lower-case hexadecimal.
std::string HexHash(const char* algorithm, std::initializer_list<std::string_view> parts);

std::string Base64Hash(const char* algorithm, std::initializer_list<std::string_view> parts);

}  // namespace recorder
