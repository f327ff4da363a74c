#include "recorder/utility/secrets.h"

#include <algorithm>
#include <stdexcept>

#include "recorder/utility/files.h"

namespace recorder {
namespace {

const unsigned char* AsBytes(std::string_view text) { return reinterpret_cast<const unsigned char*>(text.data()); }
unsigned char* AsBytes(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

SecretKey DerivedKey(const SecretKey& key, std::string_view context) {
  std::string bytes(SecretKey::kSize, '\0');
  const WipeAtEnd wipe{bytes};
  crypto_generichash(AsBytes(bytes), bytes.size(), AsBytes(context), context.size(), key.Data(), SecretKey::kSize);
  return *SecretKey::FromBytes(bytes);
}

}  // namespace

void PrepareSodium() {
  if (sodium_init() < 0) throw std::runtime_error("libsodium cannot be prepared");
}

std::string HexText(std::span<const unsigned char> bytes) {
  std::string text(2 * bytes.size() + 1, '\0');
  sodium_bin2hex(text.data(), text.size(), bytes.data(), bytes.size());
  text.pop_back();  // the terminator
  return text;
}

SecretKey SecretKey::Random() {
  SecretKey key;
  randombytes_buf(key.bytes_.data(), key.bytes_.size());
  return key;
}

std::optional<SecretKey> SecretKey::FromBytes(std::string_view bytes) {
  if (bytes.size() != kSize) return std::nullopt;
  SecretKey key;
  std::copy(bytes.begin(), bytes.end(), key.bytes_.begin());
  return key;
}

std::optional<SecretKey> SecretKey::FromHex(std::string_view hex) {
  SecretKey key;
  std::size_t length = 0;
  const bool isHex = sodium_hex2bin(key.bytes_.data(), kSize, hex.data(), hex.size(), nullptr, &length, nullptr) == 0;
  if (!isHex || length != kSize || hex.size() != 2 * kSize) return std::nullopt;
  return key;
}

SecretKey LoadOrMakeKey(const std::filesystem::path& file) {
  if (!std::filesystem::exists(file)) {
    std::string fresh = SecretKey::Random().Bytes();
    const WipeAtEnd wipe{fresh};
    CreateFileOnce(file, fresh);
  }
  std::string bytes = ReadFile(file);
  const WipeAtEnd wipe{bytes};
  const auto key = SecretKey::FromBytes(bytes);
  if (!key)
    throw std::runtime_error(file.string() + ": not a key file of " + std::to_string(SecretKey::kSize) + " bytes");
  return *key;
}

std::string Seal(const SecretKey& key, std::string_view context, std::string_view text) {
  std::string sealed(crypto_secretbox_NONCEBYTES + crypto_secretbox_MACBYTES + text.size(), '\0');
  unsigned char* nonce = AsBytes(sealed);
  randombytes_buf(nonce, crypto_secretbox_NONCEBYTES);
  crypto_secretbox_easy(nonce + crypto_secretbox_NONCEBYTES, AsBytes(text), text.size(), nonce,
                        DerivedKey(key, context).Data());
  return sealed;
}

std::optional<std::string> Unseal(const SecretKey& key, std::string_view context, std::string_view sealed) {
  constexpr std::size_t kOverhead = crypto_secretbox_NONCEBYTES + crypto_secretbox_MACBYTES;
  if (sealed.size() < kOverhead) return std::nullopt;
  const std::string_view box = sealed.substr(crypto_secretbox_NONCEBYTES);
  std::string text(sealed.size() - kOverhead, '\0');
  const int result = crypto_secretbox_open_easy(AsBytes(text), AsBytes(box), box.size(), AsBytes(sealed),
                                                DerivedKey(key, context).Data());
  if (result != 0) return std::nullopt;
  return text;
}

std::string RandomPassword() {
  PrepareSodium();
  constexpr std::string_view kLetters = "abcdefghijkmnpqrstuvwxyzABCDEFGHJKLMNPQRSTUVWXYZ23456789";
  constexpr int kLength = 20;
  std::string password;
  for (int i = 0; i < kLength; ++i) password += kLetters[randombytes_uniform(kLetters.size())];
  return password;
}

}  // namespace recorder
