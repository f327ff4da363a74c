#include "recorder/device/find/path_hunt.h"

#include "recorder/media/codecs.h"
#include "recorder/request/request_scope.h"

namespace recorder::find {

Outcome PathHunt::Ask(const std::string& path) {
  const Outcome outcome = Describe(path);
  return outcome == Outcome::kOk && Codec().empty() ? Outcome::kNoVideo : outcome;
}

/// Some close the connection behind each answer.
Outcome PathHunt::Describe(const std::string& path) {
  if (client_) {
    const Outcome outcome = client_->DescribeOther(path);
    if (client_->IsOpen()) return outcome;
  }
  client_.emplace(camera_, path, RequestScope::Current().Deadline());
  return client_->Describe();
}

std::string PathHunt::Codec() const {
  const ::recorder::Codec* codec = client_ ? CodecOfEncoding(client_->Video().codec) : nullptr;
  return codec == nullptr ? "" : std::string(codec->name);
}

}  // namespace recorder::find
