#include <array>
#include <string_view>

#include "recorder/notice/notice.h"
#include "recorder/notice/signed_post.h"
#include "recorder/own/camera_failure.h"
#include "recorder/own/handlers.h"
#include "recorder/own/typed_members.h"
#include "recorder/records/records.h"
#include "recorder/utility/config.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/secrets.h"

namespace recorder {

namespace {

constexpr std::array<std::string_view, 2> kWebhookMembers = {"url", "secret"};
constexpr std::size_t kShortestSecret = 16;

Json::Value WebhookJson(const std::optional<Webhook>& webhook) {
  if (!webhook) return {};
  Json::Value json(Json::objectValue);
  json["url"] = webhook->url;
  json["triedAt"] = TimeOf(webhook->triedAt);
  json["result"] = webhook->result.empty() ? Json::Value() : Json::Value(webhook->result);
  return json;
}

Webhook Found(const Records& records) {
  const auto webhook = records.FindWebhook();
  if (!webhook) throw HttpError(404, "there is no webhook");
  return *webhook;
}

/// The secret that was given, or else the one that is stored for this address: whoever does not know it gets nothing
/// signed with it at a place of his own.
std::string SecretOf(const OwnRequest& request, const std::string& url, const Records& records) {
  std::string secret = TextOf(request, "secret");
  const bool isGood = secret.size() >= kShortestSecret && secret.size() <= kLongestUserPassword;
  if (isGood) return secret;
  const auto webhook = records.FindWebhook();
  if (secret.empty() && webhook && webhook->url == url) return records.WebhookSecret(*webhook);
  Wipe(secret);
  throw BadMember("secret", "must have 16 to 256 bytes");
}

}  // namespace

OwnAnswer ShowWebhook(const OwnRequest& /*request*/, OwnTools& /*tools*/) {
  return Success(WebhookJson(Records(GetConfig().stateFolder).FindWebhook()));
}

OwnAnswer SetWebhook(const OwnRequest& request, OwnTools& /*tools*/) {
  RefuseOtherMembers(request.params, kWebhookMembers, "");
  const std::string url = TextOf(request, "url");
  if (url.size() > kLongestRecordText || !IsNoticeUrl(url)) {
    throw BadMember("url", "must be an address of http or https, without a login");
  }
  Records records(GetConfig().stateFolder);
  std::string secret = SecretOf(request, url, records);
  const WipeAtEnd wipe(secret);
  records.SetWebhook(url, secret);
  return Success(WebhookJson(records.FindWebhook()));
}

OwnAnswer RemoveWebhook(const OwnRequest& /*request*/, OwnTools& /*tools*/) {
  if (!Records(GetConfig().stateFolder).RemoveWebhook()) throw HttpError(404, "there is no webhook");
  return Success(Json::Value(Json::objectValue));
}

OwnAnswer TestWebhook(const OwnRequest& /*request*/, OwnTools& /*tools*/) {
  const Records records(GetConfig().stateFolder);
  const Webhook webhook = Found(records);
  std::string secret = records.WebhookSecret(webhook);
  const WipeAtEnd wipe(secret);
  const PostResult result = PostSigned(webhook.url, secret, TextOf(Notice{.kind = Notice::Kind::kTest}));
  OwnAnswer answer =
      result.outcome == Outcome::kOk ? Success(Json::Value(Json::objectValue)) : CameraFailure(result.outcome);
  answer.json[result.outcome == Outcome::kOk ? "data" : "error"]["status"] = Json::Int64(result.status);
  return answer;
}

}  // namespace recorder
