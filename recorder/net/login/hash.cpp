#include "recorder/net/login/hash.h"

#include <array>
#include <cstdint>
#include <memory>
#include <new>

extern "C" {
#include <libavutil/hash.h>
}

namespace recorder {
namespace {

struct FreeHash {
  void operator()(AVHashContext* context) const noexcept { av_hash_freep(&context); }
};
using HashContext = std::unique_ptr<AVHashContext, FreeHash>;

/// Room for a hash as text, the terminating zero included; hexadecimal takes more than base64.
using HashText = std::array<std::uint8_t, 2 * AV_HASH_MAX_SIZE + 1>;

HashContext Hashed(const char* algorithm, std::initializer_list<std::string_view> parts) {
  AVHashContext* raw = nullptr;
  if (av_hash_alloc(&raw, algorithm) < 0) throw std::bad_alloc();
  HashContext context(raw);
  av_hash_init(raw);
  for (const std::string_view part : parts) {
    av_hash_update(raw, reinterpret_cast<const std::uint8_t*>(part.data()), part.size());
  }
  return context;
}

}  // namespace

std::string HexHash(const char* algorithm, std::initializer_list<std::string_view> parts) {
  HashText text{};
  av_hash_final_hex(Hashed(algorithm, parts).get(), text.data(), static_cast<int>(text.size()));
  return reinterpret_cast<const char*>(text.data());
}

std::string Base64Hash(const char* algorithm, std::initializer_list<std::string_view> parts) {
  HashText text{};
  av_hash_final_b64(Hashed(algorithm, parts).get(), text.data(), static_cast<int>(text.size()));
  return reinterpret_cast<const char*>(text.data());
}

}  // namespace recorder
