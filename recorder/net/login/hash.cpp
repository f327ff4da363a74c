#include "recorder/net/login/hash.h"

#include <openssl/evp.h>
#include <sodium.h>

#include <array>
#include <memory>
#include <new>
#include <span>

#include "recorder/utility/handle.h"

namespace recorder {
namespace {

using HashContext = std::unique_ptr<EVP_MD_CTX, Deleter<EVP_MD_CTX_free>>;

class Hash {
 public:
  Hash(const char* algorithm, std::initializer_list<std::string_view> parts) {
    const HashContext context(EVP_MD_CTX_new());
    if (!context || EVP_DigestInit_ex(context.get(), EVP_get_digestbyname(algorithm), nullptr) != 1) {
      throw std::bad_alloc();
    }
    for (const std::string_view part : parts) EVP_DigestUpdate(context.get(), part.data(), part.size());
    EVP_DigestFinal_ex(context.get(), bytes_.data(), &size_);
  }

  std::span<const unsigned char> Bytes() const { return std::span(bytes_).first(size_); }

 private:
  std::array<unsigned char, EVP_MAX_MD_SIZE> bytes_{};
  unsigned int size_ = 0;
};

}  // namespace

std::string HexHash(const char* algorithm, std::initializer_list<std::string_view> parts) {
  const Hash hash(algorithm, parts);
  std::array<char, 2 * EVP_MAX_MD_SIZE + 1> text{};
  return sodium_bin2hex(text.data(), text.size(), hash.Bytes().data(), hash.Bytes().size());
}

std::string Base64Hash(const char* algorithm, std::initializer_list<std::string_view> parts) {
  const Hash hash(algorithm, parts);
  std::array<char, sodium_base64_ENCODED_LEN(EVP_MAX_MD_SIZE, sodium_base64_VARIANT_ORIGINAL)> text{};
  return sodium_bin2base64(text.data(), text.size(), hash.Bytes().data(), hash.Bytes().size(),
                           sodium_base64_VARIANT_ORIGINAL);
}

}  // namespace recorder
