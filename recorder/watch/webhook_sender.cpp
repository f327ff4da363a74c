#include "recorder/watch/webhook_sender.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <utility>

#include "recorder/notice/signed_post.h"
#include "recorder/utility/log.h"
#include "recorder/utility/secrets.h"
#include "recorder/utility/watch_clock.h"

namespace recorder {

std::chrono::minutes PauseAfter(int failures) {
  constexpr std::array<std::chrono::minutes, 4> kPauses = {std::chrono::minutes(1), std::chrono::minutes(5),
                                                           std::chrono::minutes(30), std::chrono::minutes(180)};
  return kPauses.at(std::min(static_cast<std::size_t>(std::max(failures, 1)), kPauses.size()) - 1);
}

namespace {

/// A camera that nobody named has its address for a name, which a notice must not tell.
std::string ToldName(const std::optional<CameraRecord>& camera) {
  if (!camera) return "";
  const bool isWord = camera->host.find_first_of(".:") == std::string::npos;  // which may be in any name
  const bool tells = isWord ? camera->name == camera->host : camera->name.find(camera->host) != std::string::npos;
  return tells ? "" : camera->name;
}

}  // namespace

WebhookSender::WebhookSender(std::filesystem::path stateFolder)
    : stateFolder_(std::move(stateFolder)), news_(stateFolder_) {}

void WebhookSender::Send() {
  if (!news_.AreThere() && !webhook_) return;
  Records records(stateFolder_);
  do {
    Follow(records);  // whoever is told takes his time
  } while (line_ && Clock::now() >= sendAt_ && SendNext(records));
}

/// Heeds what an admin has set.
void WebhookSender::Follow(const Records& records) {
  auto webhook = records.FindWebhook();
  const bool isSame = webhook && webhook_ && webhook->revision == webhook_->revision && webhook->url == webhook_->url;
  if (isSame) return;
  webhook_ = std::move(webhook);
  line_.reset();
  waiting_.reset();
  failures_ = 0;
  sendAt_ = {};
  if (webhook_) line_.emplace(records, webhook_->told, WatchClock::Seconds());
}

/// False when nothing is left to be sent now.
bool WebhookSender::SendNext(Records& records) {
  if (!waiting_) waiting_ = line_->Next(records, WatchClock::Seconds());
  if (!waiting_) return false;
  waiting_->name = ToldName(records.Find(waiting_->event.cameraId));
  std::string secret = records.WebhookSecret(*webhook_);
  const WipeAtEnd wipe(secret);
  const PostResult result = PostSigned(webhook_->url, secret, TextOf(*waiting_));
  webhook_->triedAt = SecondsNow();
  webhook_->result = NameOf(result.outcome);
  const bool isTold = result.outcome == Outcome::kOk;
  if (isTold) webhook_->told = line_->Place();
  isTold ? waiting_.reset() : NoteFailure(Describe(result.outcome));
  if (isTold) failures_ = 0;
  records.NoteTold(*webhook_);
  return isTold;
}

void WebhookSender::NoteFailure(std::string_view cause) {
  if (failures_ == 0) LogFailure("The webhook cannot be told: " + std::string(cause) + "; it is tried again.");
  sendAt_ = Clock::now() + PauseAfter(++failures_);
}

}  // namespace recorder
