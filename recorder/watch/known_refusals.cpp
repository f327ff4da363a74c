#include "recorder/watch/known_refusals.h"

#include <algorithm>
#include <array>
#include <chrono>

#include "recorder/utility/watch_clock.h"

namespace recorder {
namespace {

RefusedLogins::Time WallNow() { return std::chrono::seconds(WatchClock::Seconds()); }

}  // namespace

void KnownRefusals::Update() {
  tried_.ForgetSpent(WallNow());
  if (!news_.AreThere()) return;
  const Records records(stateFolder_);
  stored_ = RefusedLogins();
  for (const RefusedCamera& refused : records.RefusedCameras()) AddStored(records, refused);
}

/// Of one whose password cannot be read nobody knows that a row has the same.
void KnownRefusals::AddStored(const Records& records, const RefusedCamera& refused) {
  const std::chrono::seconds at(std::min(refused.since, WatchClock::Seconds()));
  const auto camera = records.Find(refused.id);
  if (!camera || at + RefusedLogins::kLeastPause <= WallNow()) return;
  RunRow row{{*camera}, {}};
  const WipeAtEnd wipe(row.password);
  try {
    row.password = records.Password(*camera);
  } catch (const RecordsError&) {
    return;
  }
  stored_.Add(DigestOf(row), at);
}

std::string KnownRefusals::DigestOf(const RunRow& row) const {
  std::string text = LoginOf(row.camera) + '\n' + row.password;
  const WipeAtEnd wipe(text);
  std::array<unsigned char, crypto_generichash_BYTES> digest{};
  crypto_generichash(digest.data(), digest.size(), reinterpret_cast<const unsigned char*>(text.data()), text.size(),
                     key_.Data(), SecretKey::kSize);
  return {digest.begin(), digest.end()};
}

void KnownRefusals::Add(const std::string& digest) { tried_.Add(digest, WallNow()); }

bool KnownRefusals::Holds(const std::string& digest) const {
  return stored_.Holds(digest, WallNow()) || tried_.Holds(digest, WallNow());
}

}  // namespace recorder
