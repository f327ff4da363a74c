#pragma once

#include <chrono>
#include <filesystem>
#include <optional>

#include "recorder/records/webhook.h"
#include "recorder/utility/clock.h"
#include "recorder/watch/notice_line.h"
#include "recorder/watch/records_news.h"

namespace recorder {

/// How long to wait after so many failures in a row, from 1 on, before a notice is sent again.
std::chrono::minutes PauseAfter(int failures);

/// Tells the webhook of changes of cameras, each at least once and in their order: one that cannot be told waits, and
/// all others behind it. Where the webhook is set anew, nothing waits any more.
///
/// Thread:  one. Send waits for whoever is told, 10 s for each notice at most.
/// Failure: throws RecordsError; a webhook that cannot be told is logged, once for each notice.
class WebhookSender {
 public:
  explicit WebhookSender(std::filesystem::path stateFolder);

  /// Sends what there is to send now.
  void Send();

 private:
  void Follow(const Records& records);
  bool SendNext(Records& records);
  void NoteFailure(std::string_view cause);

  const std::filesystem::path stateFolder_;
  RecordsNews news_;
  std::optional<Webhook> webhook_;
  std::optional<NoticeLine> line_;
  std::optional<Notice> waiting_;  // that could not be sent
  int failures_ = 0;               // of it
  Clock::time_point sendAt_;
};

}  // namespace recorder
