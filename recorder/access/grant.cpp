#include "recorder/access/grant.h"

#include <sodium.h>

#include <array>
#include <optional>

#include "recorder/utility/files.h"
#include "recorder/utility/secrets.h"
#include "recorder/utility/state_files.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

using Kind = Grant::Kind;

constexpr std::array<std::string_view, 3> kKinds = {"session", "token", "link"};  // in the order of Kind
constexpr std::size_t kSecretBytes = 32;

std::optional<Kind> ParseKind(std::string_view name) {
  for (std::size_t i = 0; i < kKinds.size(); ++i) {
    if (kKinds[i] == name) return static_cast<Kind>(i);
  }
  return std::nullopt;
}

std::optional<Grant> ParseGrant(std::string_view line) {
  Grant grant;
  const auto kind = ParseKind(TakeUntil(line, '\t'));
  grant.hash = TakeUntil(line, '\t');
  grant.id = TakeUntil(line, '\t');
  grant.user = TakeUntil(line, '\t');
  const auto role = ParseRole(TakeUntil(line, '\t'));
  const auto created = ParseNumber<std::int64_t>(TakeUntil(line, '\t'));
  const auto lastUsed = ParseNumber<std::int64_t>(TakeUntil(line, '\t'));
  const auto until = ParseNumber<std::int64_t>(TakeUntil(line, '\t'));
  if (!kind || !role || !created || !lastUsed || !until) return std::nullopt;
  grant.kind = *kind;
  grant.role = *role;
  grant.created = *created;
  grant.lastUsed = *lastUsed;
  grant.until = *until;
  grant.label = line;
  return grant;
}

}  // namespace

std::filesystem::path GrantsFile(const std::filesystem::path& stateFolder) { return stateFolder / kGrantsFile; }

std::vector<Grant> ReadGrants(const std::filesystem::path& stateFolder) {
  const std::filesystem::path file = GrantsFile(stateFolder);
  std::vector<Grant> grants;
  if (!std::filesystem::exists(file)) return grants;
  const std::string text = ReadFile(file);
  for (std::string_view rest = text; !rest.empty();) {
    if (std::optional<Grant> grant = ParseGrant(TakeUntil(rest, '\n'))) grants.push_back(*std::move(grant));
  }
  return grants;
}

std::string ToText(const std::vector<Grant>& grants) {
  std::string text;
  for (const Grant& grant : grants) {
    text += kKinds[static_cast<std::size_t>(grant.kind)];
    for (const std::string& member :
         {grant.hash, grant.id, grant.user, std::string(NameOf(grant.role)), std::to_string(grant.created),
          std::to_string(grant.lastUsed), std::to_string(grant.until), grant.label}) {
      text += '\t' + member;
    }
    text += '\n';
  }
  return text;
}

std::string MakeSecret() {
  constexpr int kVariant = sodium_base64_VARIANT_URLSAFE_NO_PADDING;
  const SecretKey bytes = SecretKey::Random();
  static_assert(SecretKey::kSize == kSecretBytes);
  std::array<char, sodium_base64_ENCODED_LEN(kSecretBytes, kVariant)> text{};
  return sodium_bin2base64(text.data(), text.size(), bytes.Data(), SecretKey::kSize, kVariant);
}

std::string HashOfSecret(std::string_view secret) {
  std::array<unsigned char, crypto_generichash_BYTES> hash{};
  crypto_generichash(hash.data(), hash.size(), reinterpret_cast<const unsigned char*>(secret.data()), secret.size(),
                     nullptr, 0);
  return HexText(hash);
}

}  // namespace recorder
