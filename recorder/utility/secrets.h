#pragma once

#include <sodium.h>

#include <array>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace recorder {

/// Prepares libsodium, which is safe for threads from then on; throws std::runtime_error when that fails. UseConfig
/// calls it for the whole process; without that, making a SecretKey or a random password does. [any thread, any number]
void PrepareSodium();

/// Two lower-case hexadecimal digits a byte.
std::string HexText(std::span<const unsigned char> bytes);

/// 32 secret bytes that are wiped when they end.
class SecretKey {
 public:
  static constexpr std::size_t kSize = 32;

  static SecretKey Random();
  /// From raw bytes; nothing when there are not exactly kSize.
  static std::optional<SecretKey> FromBytes(std::string_view bytes);
  /// From 64 hexadecimal digits; nothing otherwise.
  static std::optional<SecretKey> FromHex(std::string_view hex);

  SecretKey(const SecretKey&) = default;
  SecretKey& operator=(const SecretKey&) = default;
  ~SecretKey() { sodium_memzero(bytes_.data(), bytes_.size()); }

  const unsigned char* Data() const { return bytes_.data(); }
  std::string Bytes() const { return {bytes_.begin(), bytes_.end()}; }
  std::string Hex() const { return HexText(bytes_); }

 private:
  SecretKey() { PrepareSodium(); }
  std::array<unsigned char, kSize> bytes_{};
};

/// Overwrites a text that held a secret, and what is left of one that was moved away or made shorter.
inline void Wipe(std::string& text) {
  text.resize(text.capacity());
  sodium_memzero(text.data(), text.size());
}

/// Wipes a text that held a secret when the guard ends.
class WipeAtEnd {
 public:
  explicit WipeAtEnd(std::string& text) : text_(text) {}
  ~WipeAtEnd() { Wipe(text_); }
  WipeAtEnd(const WipeAtEnd&) = delete;
  WipeAtEnd& operator=(const WipeAtEnd&) = delete;

 private:
  std::string& text_;
};

/// The key in `file`, made at random (mode 0600) when there is none. Processes that start at once get the same key.
/// Throws std::system_error or std::runtime_error that names the file.
SecretKey LoadOrMakeKey(const std::filesystem::path& file);

/// Encrypts and authenticates `text` (XSalsa20-Poly1305) under a key that is derived from `key` and `context`: what was
/// sealed for one context cannot be opened in another. The result is nonce and ciphertext.
std::string Seal(const SecretKey& key, std::string_view context, std::string_view text);

/// What Seal made of; nothing when it was changed, or sealed with another key or for another context.
std::optional<std::string> Unseal(const SecretKey& key, std::string_view context, std::string_view sealed);

/// A password of 20 letters and digits, about 116 bits, without characters that look alike.
std::string RandomPassword();

}  // namespace recorder
