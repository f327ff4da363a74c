#include "recorder/access/password_hash.h"

#include <crypt.h>
#include <sodium.h>

#include <array>
#include <memory>
#include <stdexcept>

#include "recorder/utility/limits.h"

namespace recorder {

namespace {

bool IsBcryptPasswordOf(const std::string& hash, const std::string& password) {
  const auto data = std::make_unique<crypt_data>();
  const char* made = crypt_rn(password.c_str(), hash.c_str(), data.get(), sizeof(crypt_data));
  const bool isRight = made != nullptr && hash.size() == std::char_traits<char>::length(made) &&
                       sodium_memcmp(made, hash.data(), hash.size()) == 0;
  sodium_memzero(data.get(), sizeof(crypt_data));
  return isRight;
}

std::size_t Bytes(const HashCost& cost) { return static_cast<std::size_t>(cost.memoryMiB) * kMiB; }
unsigned long long Passes(const HashCost& cost) { return static_cast<unsigned long long>(cost.passes); }

}  // namespace

std::string HashPassword(const std::string& password, const HashCost& cost) {
  std::array<char, crypto_pwhash_argon2id_STRBYTES> text{};
  if (crypto_pwhash_argon2id_str(text.data(), password.data(), password.size(), Passes(cost), Bytes(cost)) != 0) {
    throw std::runtime_error("there is no memory to hash a password");
  }
  return text.data();
}

bool IsPasswordOf(const std::string& hash, const std::string& password) {
  if (hash.starts_with("$2")) return IsBcryptPasswordOf(hash, password);
  return crypto_pwhash_argon2id_str_verify(hash.c_str(), password.data(), password.size()) == 0;
}

bool IsCurrentKind(const std::string& hash) { return hash.starts_with(crypto_pwhash_argon2id_STRPREFIX); }

bool IsOutdatedHash(const std::string& hash, const HashCost& cost) {
  return crypto_pwhash_argon2id_str_needs_rehash(hash.c_str(), Passes(cost), Bytes(cost)) != 0;
}

}  // namespace recorder
