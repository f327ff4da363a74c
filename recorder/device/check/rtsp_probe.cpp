#include "recorder/device/check/rtsp_probe.h"

#include <string_view>

#include "recorder/media/codecs.h"
#include "recorder/net/rtsp/rtsp_client.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/log.h"

namespace recorder {
namespace {

/// True for a codec whose name in session descriptions is `encoding`.
bool IsWanted(int videoType, std::string_view encoding) {
  const Codec* codec = CodecOfEncoding(encoding);
  return codec != nullptr && (videoType == VIDEO_TYPE_ANY || codec->type == videoType);
}

Outcome Ask(RtspClient& client, const CameraAddress& address, int videoType) {
  if (const Outcome outcome = client.Describe(); outcome != Outcome::kOk) return outcome;
  const std::string& encoding = client.Video().codec;
  if (IsWanted(videoType, encoding)) return client.Setup();
  LogFailure("The stream of " + PlaceOf(address) + " is in " + std::string(DescribeEncoding(encoding)) + ".");
  return Outcome::kNoVideo;
}

}  // namespace

RtspAnswer AskRtsp(const CameraAddress& address, const std::string& path, int videoType, Clock::time_point answerBy) {
  RtspClient client(address, path, RequestScope::Current().Deadline());
  client.AnswerBy(answerBy);
  const Outcome outcome = Ask(client, address, videoType);
  return {outcome, client.HasAnswered()};
}

}  // namespace recorder
