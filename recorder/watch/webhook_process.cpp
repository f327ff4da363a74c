#include "recorder/watch/webhook_process.h"

#include <unistd.h>

#include <exception>
#include <thread>
#include <utility>

#include "recorder/records/records.h"
#include "recorder/utility/counts.h"
#include "recorder/utility/log.h"
#include "recorder/watch/webhook_sender.h"

namespace recorder {
namespace {

constexpr std::chrono::seconds kSendAgain{1};
/// What keeps a process from its work may do so again.
constexpr std::chrono::seconds kShortestLife{60};

/// What fails is tried again by the same sender, which knows how long a webhook that cannot be told has to wait.
void SendOrPause(WebhookSender& sender) try { sender.Send(); } catch (const RecordsError& error) {
  LogFailure(std::string("The webhook is told nothing for a minute: ") + error.what());
  std::this_thread::sleep_for(kShortestLife);
}

/// Until it fails.
void TellWebhook(const std::filesystem::path& stateFolder) try {
  close_range(STDERR_FILENO + 1, ~0U, 0);
  WebhookSender sender(stateFolder);
  for (;; std::this_thread::sleep_for(kSendAgain)) SendOrPause(sender);
} catch (const std::exception& error) {
  LogFailure(std::string("The webhook is told nothing for a minute: ") + error.what());
}

}  // namespace

WebhookProcess::WebhookProcess(std::filesystem::path stateFolder) : stateFolder_(std::move(stateFolder)) {
  Replenish();
}

void WebhookProcess::Replenish() {
  const bool isNew = start_ == Clock::time_point();
  if (!process_.HasEnded() || (!isNew && Clock::now() - start_ < kShortestLife)) return;
  if (!isNew) SharedCounts().AddEnd(Program::kWatch);
  start_ = Clock::now();
  process_ = ChildProcess([this] { TellWebhook(stateFolder_); });
}

}  // namespace recorder
