#include "recorder/watch/job_messages.h"

#include <cstdint>
#include <cstring>
#include <stdexcept>

#include "recorder/utility/json_text.h"
#include "recorder/utility/secrets.h"

namespace recorder {
namespace {

using Length = std::uint32_t;

/// The JSON may hold a password.
std::string WithLength(std::string json) {
  const WipeAtEnd wipe(json);
  const auto length = static_cast<Length>(json.size());
  std::string message(sizeof(length), '\0');
  message.reserve(sizeof(length) + json.size());
  std::memcpy(message.data(), &length, sizeof(length));
  return message += json;
}

Json::Value Parse(std::string_view text) {
  std::string mistakes;
  if (auto json = ParseStrictJson(text, mistakes)) return std::move(*json);
  throw std::runtime_error("a message between processes is no JSON");
}

}  // namespace

std::string ToMessage(const CheckJob& job) {
  Json::Value json;
  json["method"] = job.method;
  json["params"] = job.params;
  return WithLength(ToText(json));
}

std::string ToMessage(const CheckAnswer& answer) {
  Json::Value json;
  json["kind"] = static_cast<int>(answer.kind);
  json["causes"] = answer.causes;
  json["milliseconds"] = static_cast<Json::Int64>(answer.time.count());
  return WithLength(ToText(json));
}

CheckJob ReadJob(std::string_view text) {
  const Json::Value json = Parse(text);
  return {.method = json["method"].asString(), .params = json["params"]};
}

CheckAnswer ReadAnswer(std::string_view text) {
  const Json::Value json = Parse(text);
  return {.kind = static_cast<CheckAnswer::Kind>(json["kind"].asInt()),
          .causes = json["causes"].asString(),
          .time = std::chrono::milliseconds(json["milliseconds"].asInt64())};
}

std::optional<std::string> TakeMessage(std::string& received) {
  Length length = 0;
  if (received.size() < sizeof(length)) return std::nullopt;
  std::memcpy(&length, received.data(), sizeof(length));
  if (received.size() - sizeof(length) < length) return std::nullopt;
  std::string message = received.substr(sizeof(length), length);
  received.erase(0, sizeof(length) + length);
  return message;
}

}  // namespace recorder
