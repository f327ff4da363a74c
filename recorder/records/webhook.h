#pragma once

#include <cstdint>
#include <string>

namespace recorder {

/// How far the webhook has been told. Flapping cameras that are steady again are told of at the time when they are.
struct WebhookPlace {
  std::int64_t event = 0;  ///< id of the last event that it was told, or need not be told
  /// When a camera was steady again and it was told that the last time, in seconds since 1970.
  std::int64_t steady = 0;

  bool operator==(const WebhookPlace&) const = default;
};

/// Where changes of cameras are told to. Its secret is not part of it.
struct Webhook {
  std::string url;
  std::int64_t revision = 0;  ///< another one whenever the webhook was set, also after it was removed
  WebhookPlace told;
  std::int64_t triedAt = 0;  ///< when it was told something last, in seconds since 1970; 0: never
  std::string result;        ///< what that came to: the name of an Outcome, or "" for never
};

}  // namespace recorder
